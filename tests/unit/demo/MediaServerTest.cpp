#include <gtest/gtest.h>
#include <httplib.h>

#include <thread>

#include "demo/MediaServer.h"
#include "tests/support/TempDir.h"

namespace demo {
namespace {

class MediaServerTest : public testing::Test {
 protected:
  support::TempDir folder;
  httplib::Server server;
  int port = 0;
  std::thread serving;

  void SetUp() override {
    folder.write("films/a.avi", "0123456789");
    folder.write("films/empty.avi", "");
    folder.write("secret.txt", "s");
    serveMedia(server, {folder / "films"}, [](const httplib::Request& request, const std::string&) {
      return request.get_header_value("Authorization") == "open";
    });
    port = server.bind_to_any_port("127.0.0.1");
    serving = std::thread([this] { server.listen_after_bind(); });
  }

  void TearDown() override {
    server.stop();
    serving.join();
  }

  httplib::Result get(const std::string& path, const httplib::Headers& headers = {}) {
    return httplib::Client("127.0.0.1", port).Get(path.c_str(), headers);
  }
};

TEST_F(MediaServerTest, AFilmIsServedWhole) {
  const auto answer = get("/media/a.avi");
  EXPECT_EQ(answer->status, 200);
  EXPECT_EQ(answer->body, "0123456789");
  EXPECT_FALSE(answer->get_header_value("ETag").empty());
}

TEST_F(MediaServerTest, ARangeIsServedWhileTheVersionIsTheSame) {
  const std::string validator = get("/media/a.avi")->get_header_value("ETag");
  const auto answer = get("/media/a.avi", {{"Range", "bytes=4-6"}, {"If-Range", validator}});
  EXPECT_EQ(answer->status, 206);
  EXPECT_EQ(answer->body, "456");
  EXPECT_EQ(answer->get_header_value("Content-Range"), "bytes 4-6/10");
}

TEST_F(MediaServerTest, AnotherVersionIsServedWhole) {
  const auto answer = get("/media/a.avi", {{"Range", "bytes=4-6"}, {"If-Range", "\"other\""}});
  EXPECT_EQ(answer->status, 200);
  EXPECT_EQ(answer->body, "0123456789");
}

TEST_F(MediaServerTest, AnEmptyFilmIsEmpty) {
  const auto answer = get("/media/empty.avi");
  EXPECT_EQ(answer->status, 200);
  EXPECT_EQ(answer->body, "");
}

TEST_F(MediaServerTest, NothingOutsideTheFolderIsServed) {
  for (const char* path : {"/media/../secret.txt", "/media/..%2Fsecret.txt", "/media/none.avi",
                           "/media/..", "/secret.txt"}) {
    EXPECT_EQ(get(path)->status, 404) << path;
  }
}

TEST_F(MediaServerTest, AProtectedFilmNeedsItsKey) {
  EXPECT_EQ(get("/protected/a.avi")->status, 401);
  EXPECT_EQ(get("/protected/a.avi", {{"Authorization", "open"}})->body, "0123456789");
}

}  // namespace
}  // namespace demo
