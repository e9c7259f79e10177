#include <gmock/gmock.h>

#include <deque>
#include <future>

#include "download/MediaSize.h"
#include "tests/support/Gate.h"
#include "tests/support/Loopback.h"
#include "tests/support/Promptness.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TestPki.h"

namespace download {
namespace {

using support::bareResponse;
using support::Gate;
using support::Script;
using support::ScriptedServer;

class MediaSize : public testing::Test {
 protected:
  /// The server answers a request for `path` with this header block.
  void answer(const std::string& path, const std::string& headers,
              const std::string& status = "200 OK") {
    server_.onPath(path, Script().send(bareResponse(status, headers)).close());
  }

  std::string locationOf(const std::string& path) {
    return "Location: " + server_.url(path) + "\r\n";
  }

  /// A gate that outlives the server.
  Gate& gate() { return gates_.emplace_back(); }

  std::uint64_t sizeOf(const std::string& path) {
    return totalMediaSize(server_.url(path), cancel_);
  }

  std::deque<Gate> gates_;
  ScriptedServer server_;
  kvsc::CancelToken cancel_;
};

TEST_F(MediaSize, IsTheLengthThatTheServerAnnounces) {
  answer("/film.avi", "Content-Length: 4294967297\r\n");
  EXPECT_EQ(sizeOf("/film.avi"), 4294967297u);
}

TEST_F(MediaSize, IsAskedForWithHead) {
  answer("/film.avi", "Content-Length: 1\r\n");
  sizeOf("/film.avi");
  EXPECT_TRUE(server_.requests().at(0).starts_with("HEAD /film.avi "));
}

TEST_F(MediaSize, FollowsALocationWithoutTheLineEnd) {
  answer("/here", locationOf("/there"));
  answer("/there", "Content-Length: 7\r\n");
  EXPECT_EQ(sizeOf("/here"), 7u);
  EXPECT_EQ(server_.connectionCount(), 2u);
}

TEST_F(MediaSize, IsTheLengthEvenWithALocation) {
  answer("/film.avi", locationOf("/there") + "Content-Length: 42\r\n");
  EXPECT_EQ(sizeOf("/film.avi"), 42u);
  EXPECT_EQ(server_.connectionCount(), 1u);
}

TEST_F(MediaSize, IsZeroWhenTheTargetFails) {
  answer("/here", locationOf("/gone"));
  answer("/gone", "Content-Length: 7\r\n", "404 Not Found");
  EXPECT_EQ(sizeOf("/here"), 0u);
  EXPECT_EQ(server_.connectionCount(), 2u);
  const support::RefusingPort closed;
  answer("/away",
         "Location: " + support::loopbackUrl("http", "127.0.0.1", closed.port(), "/film.avi") +
             "\r\n");
  EXPECT_EQ(sizeOf("/away"), 0u);
}

TEST_F(MediaSize, FollowsMoreStepsThanTheClientWouldByItself) {
  for (int step = 0; step < 25; ++step) {
    answer("/" + std::to_string(step), locationOf("/" + std::to_string(step + 1)));
  }
  answer("/25", "Content-Length: 7\r\n");
  EXPECT_EQ(sizeOf("/0"), 7u);
}

TEST_F(MediaSize, FollowsARealRedirect) {
  answer("/here", locationOf("/there"), "302 Found");
  answer("/there", "Content-Length: 7\r\n");
  EXPECT_EQ(sizeOf("/here"), 7u);
}

TEST_F(MediaSize, AsksTheSameAddressASecondTimeWhenItIsSentThere) {
  server_.onRequest([this](const std::string&) {
    const bool first = server_.connectionCount() == 1;
    const std::string headers = first ? locationOf("/film") : "Content-Length: 7\r\n";
    return Script().send(bareResponse("200 OK", headers)).close();
  });
  EXPECT_EQ(sizeOf("/film"), 7u);
}

TEST_F(MediaSize, IsZeroForACircle) {
  answer("/a", locationOf("/b"));
  answer("/b", locationOf("/a"));
  EXPECT_EQ(sizeOf("/a"), 0u);
}

TEST_F(MediaSize, IsZeroForACircleOfRealRedirects) {
  answer("/a", locationOf("/b"), "302 Found");
  answer("/b", locationOf("/a"), "302 Found");
  EXPECT_EQ(sizeOf("/a"), 0u);
}

TEST_F(MediaSize, IsZeroForAnErrorOfTheServer) {
  answer("/film.avi", "Content-Length: 7\r\n", "404 Not Found");
  EXPECT_EQ(sizeOf("/film.avi"), 0u);
}

TEST_F(MediaSize, IsZeroForAnAnswerWithoutLength) {
  answer("/film.avi", "");
  EXPECT_EQ(sizeOf("/film.avi"), 0u);
}

TEST_F(MediaSize, IsZeroForAnAddressThatDoesNotParse) {
  EXPECT_EQ(totalMediaSize("not an address", cancel_), 0u);
  EXPECT_EQ(totalMediaSize("", cancel_), 0u);
}

TEST_F(MediaSize, IsZeroForARelativeLocation) {
  answer("/film.avi", "Location: /there\r\n");
  EXPECT_EQ(sizeOf("/film.avi"), 0u);
}

TEST_F(MediaSize, IsNotAskedForOnceCancelled) {
  cancel_.cancel();
  EXPECT_EQ(sizeOf("/film.avi"), 0u);
  EXPECT_EQ(server_.connectionCount(), 0u);
}

TEST_F(MediaSize, EndsPromptlyWhenCancelledDuringASilence) {
  const auto cancelled = [this] {
    Gate& asked = gate();
    server_.next(Script().readRequest().announce(asked).stall());
    cancel_.reset();
    auto size = std::async(std::launch::async, [this] { return sizeOf("/film.avi"); });
    EXPECT_TRUE(asked.wait());
    return support::timeOf([&] {
      cancel_.cancel();
      EXPECT_EQ(size.get(), 0u);
    });
  };
  EXPECT_LT(support::bestTime(cancelled), support::kPromptly);
}

TEST_F(MediaSize, IsLearntOverTlsWhateverTheCertificate) {
  ScriptedServer secure(support::TlsSettings{.identity = support::pki::selfSigned()});
  secure.always(Script::answer(bareResponse("200 OK", "Content-Length: 7\r\n")));
  EXPECT_EQ(totalMediaSize(secure.url("/film.avi"), cancel_), 7u);
}

TEST_F(MediaSize, FollowsARedirectAcrossSchemes) {
  ScriptedServer secure(support::TlsSettings{.identity = support::pki::selfSigned()});
  secure.always(Script::answer(bareResponse("200 OK", "Content-Length: 7\r\n")));
  answer("/here", "Location: " + secure.url("/there") + "\r\n");
  EXPECT_EQ(sizeOf("/here"), 7u);
}

TEST(RedirectTarget, LosesTheTwoCharactersOfALineEnd) {
  EXPECT_EQ(redirectTarget("http://h/a\r\n"), "http://h/a");
  EXPECT_EQ(redirectTarget("http://h/a"), "http://h/a");
  EXPECT_EQ(redirectTarget("http://h/a\r"), "http://h/a\r");
  EXPECT_EQ(redirectTarget(""), "");
}

TEST(RedirectTarget, LosesTwoCharactersEvenOfABareLineFeed) {
  EXPECT_EQ(redirectTarget("http://h/a\n"), "http://h/");
  EXPECT_EQ(redirectTarget("\n"), "");
}

TEST(RedirectLimit, AllowsAnAddressTenTimes) {
  RedirectLimit limit;
  for (int time = 0; time < RedirectLimit::kSameAddress; ++time) EXPECT_TRUE(limit.mayAsk("a"));
  EXPECT_FALSE(limit.mayAsk("a"));
  EXPECT_TRUE(limit.mayAsk("b"));
}

TEST(RedirectLimit, EndsAnEndlessChain) {
  RedirectLimit limit;
  for (int step = 0; step < RedirectLimit::kSteps; ++step) {
    ASSERT_TRUE(limit.mayAsk(std::to_string(step)));
  }
  EXPECT_FALSE(limit.mayAsk("one more"));
}

}  // namespace
}  // namespace download
