// Ends that come while a transfer waits for a server that does not answer.

#include <algorithm>
#include <functional>

#include "tests/support/Loopback.h"
#include "tests/unit/download/HttpHelperFixture.h"

namespace {

using std::chrono::steady_clock;
using support::Gate;
using support::Script;
using support::ScriptedServer;
using support::SilentPort;
using testing::IsEmpty;

using HttpHelperGet = support::HttpHelperTest;

// The promise; a machine that is busy with other things may need a second try to keep it.
constexpr std::chrono::milliseconds kPromptly{250};
constexpr int kTries = 5;

/// Where a transfer is going to hang, and how to wait until it does.
struct Hang {
  std::string url;
  std::function<bool()> isReached;
};

Hang inTheConnect(const SilentPort& silent) {
  return {support::loopbackUrl("http", "127.0.0.1", silent.port(), "/film.avi"), [&silent] {
            return support::waitFor([&] { return support::isConnecting(silent.port()); });
          }};
}

Hang behindTheFirstByte(ScriptedServer& server, const std::string& scheme, Gate& hanging) {
  server.next(Script().readBytes(1).announce(hanging).stall());
  return {support::loopbackUrl(scheme, "localhost", server.port(), "/film.avi"),
          [&hanging] { return hanging.wait(); }};
}

using End = void (HttpHelper::*)();

/// From the call of `end`, made while the transfer hangs, to the return of a failed `get`.
steady_clock::duration timeToEnd(End end, const Hang& hang, HttpCallback& receiver) {
  HttpHelper helper;
  helper.setup(hang.url, "");
  helper.setCallbacks(&receiver);
  auto result =
      std::async(std::launch::async, [&] { return std::unique_ptr<HttpResult>(helper.get("")); });
  EXPECT_TRUE(hang.isReached());
  const auto before = steady_clock::now();
  (helper.*end)();
  EXPECT_EQ(result.get()->getResult(), HTTP_RESULT_FAILED);
  return steady_clock::now() - before;
}

/// Tries until one `get` ends promptly; every one must fail without a word to the receiver.
void expectPromptEnd(End end, const std::function<Hang()>& nextHang) {
  support::EventLog log;
  support::RecordingCallback receiver(log);
  auto best = steady_clock::duration::max();
  for (int tried = 0; tried < kTries && best >= kPromptly; ++tried) {
    best = std::min(best, timeToEnd(end, nextHang(), receiver));
  }
  EXPECT_LT(best, kPromptly);
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(HttpHelperGet, EndsPromptlyCancelledDuringConnect) {
  const SilentPort silent;
  expectPromptEnd(&HttpHelper::cancelDownload, [&] { return inTheConnect(silent); });
}

TEST_F(HttpHelperGet, EndsPromptlyAbortedDuringConnect) {
  const SilentPort silent;
  expectPromptEnd(&HttpHelper::abort, [&] { return inTheConnect(silent); });
}

TEST_F(HttpHelperGet, EndsPromptlyCancelledDuringHandshake) {
  expectPromptEnd(&HttpHelper::cancelDownload,
                  [this] { return behindTheFirstByte(server_, "https", gate()); });
}

TEST_F(HttpHelperGet, EndsPromptlyAbortedDuringHandshake) {
  expectPromptEnd(&HttpHelper::abort,
                  [this] { return behindTheFirstByte(server_, "https", gate()); });
}

TEST_F(HttpHelperGet, EndsPromptlyAbortedBeforeTheFirstPiece) {
  expectPromptEnd(&HttpHelper::abort,
                  [this] { return behindTheFirstByte(server_, "http", gate()); });
}

}  // namespace
