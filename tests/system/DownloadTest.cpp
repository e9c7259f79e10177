#include <gmock/gmock.h>

#include "tests/support/Nginx.h"
#include "tests/support/TestPki.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"

namespace system_test {
namespace {

using support::Nginx;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class DownloadTest : public testing::Test {
 protected:
  Nginx server;
  PlayerHome home;

  std::string offer(const std::string& name, std::uint64_t size, std::uint64_t seed = 0) {
    writeDistinctFile(server.root() / name, size, seed);
    return server.url("/" + name);
  }

  bool arrived(const std::string& name) {
    return sameContent(server.root() / name, home.media() / name);
  }
};

TEST_F(DownloadTest, AFilmOfOneByteArrives) {
  const PlayerResult result = home.run({"get", offer("tiny.avi", 1)});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_TRUE(arrived("tiny.avi"));
}

TEST_F(DownloadTest, AFilmOfAMegabyteArrivesWithEveryEventInOrder) {
  const PlayerResult result = home.run({"get", offer("film.avi", 1'000'000)});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_TRUE(arrived("film.avi"));
  ASSERT_EQ(result.events("added").size(), 1u);
  EXPECT_EQ(result.events("added")[0]["title"], "film.avi");
  EXPECT_EQ(result.events("added")[0]["provider"], "localhost");
  ASSERT_EQ(result.events("finished").size(), 1u);
  const Json finished = result.events("finished")[0];
  EXPECT_EQ(finished["path"], (home.media() / "film.avi").string());
  EXPECT_EQ(finished["size"], 1'000'000);
  EXPECT_EQ(finished["percent"], 100);
  EXPECT_EQ(finished["status"], "completed");
  EXPECT_EQ(result.events().front()["event"], "added");
  EXPECT_THAT(home.partials(), IsEmpty());
  EXPECT_FALSE(home.isMarked("film.avi"));
}

TEST_F(DownloadTest, AFilmOfAGigabyteArrives) {
  const PlayerResult result = home.run({"get", offer("big.mkv", 1'000'000'000)});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_TRUE(arrived("big.mkv"));
}

TEST_F(DownloadTest, PercentagesOnlyGrow) {
  const PlayerResult result = home.run({"get", offer("film.avi", 20'000'000)});
  int last = 0;
  for (const Json& event : result.events("changed")) {
    EXPECT_GE(event["percent"], last);
    last = event["percent"];
  }
}

TEST_F(DownloadTest, AnEmptyFilmFailsForThatReason) {
  const PlayerResult result = home.run({"get", offer("empty.avi", 0)});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.failureCode(), "empty_file");
  EXPECT_THAT(home.films(), IsEmpty());
}

TEST_F(DownloadTest, SeveralFilmsArriveOneAfterTheOther) {
  const PlayerResult result = home.run({"get", offer("a.avi", 300'000, 1), offer("b.mkv", 1, 2),
                                        offer("c.xvid", 2'000'000, 3), offer("d.vesk", 5000, 4)});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_TRUE(arrived("a.avi") && arrived("b.mkv") && arrived("c.xvid") && arrived("d.vesk"));
  std::vector<std::string> order;
  for (const Json& event : result.events("finished")) order.push_back(event["title"]);
  EXPECT_THAT(order, ElementsAre("a.avi", "b.mkv", "c.xvid", "d.vesk"));
}

TEST_F(DownloadTest, AFilmWithBlanksInItsNameArrivesUnderThatName) {
  server.serve("two words.avi", distinctBytes(5000));
  EXPECT_EQ(home.run({"get", server.url("/two words.avi")}).status, 0);
  EXPECT_TRUE(arrived("two words.avi"));
}

TEST_F(DownloadTest, ASecondDownloadOfAFilmGetsANameOfItsOwn) {
  const std::string url = offer("film.avi", 5000);
  EXPECT_EQ(home.run({"get", url}).status, 0);
  EXPECT_EQ(home.run({"get", "--again", url}).status, 0);
  EXPECT_THAT(home.films(), ElementsAre("film.avi", "film[1].avi"));
}

TEST_F(DownloadTest, TwoFilmsOfOneNameKeepTheirOwnBytes) {
  std::filesystem::create_directories(server.root() / "x");
  std::filesystem::create_directories(server.root() / "y");
  writeDistinctFile(server.root() / "x/film.avi", 200'000, 1);
  writeDistinctFile(server.root() / "y/film.avi", 200'000, 2);
  EXPECT_EQ(home.run({"get", server.url("/x/film.avi"), server.url("/y/film.avi")}).status, 0);
  ASSERT_EQ(home.films().size(), 2u);
  EXPECT_TRUE(sameContent(server.root() / "x/film.avi", home.media() / "film.avi"));
  EXPECT_TRUE(sameContent(server.root() / "y/film.avi", home.media() / home.films()[1]));
}

TEST_F(DownloadTest, PeopleReadOneLinePerState) {
  const std::string url = offer("film.avi", 50'000);
  // A state that passes quickly may not be seen.
  EXPECT_EQ(home.runForPeople({"add", url}).output, "queued: film.avi\n");
  const PlayerResult result = home.runForPeople({"get", url});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, HasSubstr("completed: film.avi (50.0 kB) -> "));
}

TEST_F(DownloadTest, ARedirectIsFollowed) {
  const std::string target = offer("film.avi", 50'000);
  Nginx front({.serverSnippet = "location /old/ { return 302 " + target + "; }"});
  const PlayerResult result = home.run({"get", front.url("/old/name.avi")});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_TRUE(sameContent(server.root() / "film.avi", home.media() / "name.avi"));
}

class SecureDownloadTest : public testing::Test {
 protected:
  support::Identity authority = support::pki::authority("Films");
  Nginx server{{.tls = support::pki::issue(
                    authority, {.commonName = "localhost", .dnsNames = {"localhost"}})}};
  support::TempDir folder;
  PlayerHome home;

  std::string offer() {
    return (server.serve("film.avi", distinctBytes(100'000)), server.url("/film.avi"));
  }
  std::string authorityFile() { return folder.write("ca.pem", authority.certificatePem()); }
};

TEST_F(SecureDownloadTest, AFilmArrivesOverTlsFromAnAuthorityThatIsNamed) {
  home.addOptions({"--cacert", authorityFile()});
  const PlayerResult result = home.run({"get", offer()});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_TRUE(sameContent(server.root() / "film.avi", home.media() / "film.avi"));
}

TEST_F(SecureDownloadTest, TheEnvironmentNamesAuthoritiesToo) {
  home.setEnvironment("SSL_CERT_FILE", authorityFile());
  EXPECT_EQ(home.run({"get", offer()}).status, 0);
}

TEST_F(SecureDownloadTest, AnUntrustedCertificateFailsForThatReason) {
  const PlayerResult result = home.run({"get", offer()});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.failureCode(), "certificate");
  EXPECT_THAT(home.films(), IsEmpty());
}

}  // namespace
}  // namespace system_test
