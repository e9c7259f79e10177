#include <gmock/gmock.h>

#include <functional>
#include <string>

#include "tests/soak/Count.h"
#include "tests/support/Loopback.h"
#include "tests/support/Promptness.h"
#include "tests/unit/transfers/DownloadsFixture.h"

namespace playerx::transfers {
namespace {

using support::kPromptly;
using support::Script;

constexpr Milliseconds kLimit{400};
/// libcurl subtracts times in whole milliseconds and may so come to the limit a part of one early.
constexpr Milliseconds kRounding{1};
constexpr std::size_t kSize = 100'000;

/// Servers that fall silent in each phase of a transfer.
class TimeLimits : public DownloadsFixture {
 protected:
  TimeLimits() { setLimits(kLimit); }

  void setLimits(Milliseconds limit) {
    Tuning tuning = shortTimes();
    tuning.retry.retries = 0;
    tuning.connectTimeout = tuning.stall = limit;
    restart(tuning);
  }

  /// What a silent phase takes to end by itself: the limit, and no more than promptly above it.
  void expectKept(const std::string& url) {
    const auto attempt = [&] {
      const Milliseconds took = support::timeOf([&] { EXPECT_TRUE(fetch(url).broke); });
      EXPECT_GE(took, kLimit - kRounding);
      return took;
    };
    for (int i = 0; i < soak::countOr(1) && !HasFailure(); ++i) {
      EXPECT_LT(support::bestTime(attempt, kLimit + kPromptly), kLimit + kPromptly);
    }
  }

  /// What a silent phase takes to end once it is stopped.
  void expectStopped(const std::string& url, const std::function<bool()>& isSilent) {
    setLimits(Milliseconds(60'000));
    const auto attempt = [&] {
      const unsigned long long uid = start(url);
      EXPECT_TRUE(support::waitFor(isSilent));
      return support::timeOf([&] {
        downloads_->stopSession(uid);
        EXPECT_TRUE(support::waitFor([&] { return report(uid).phase == TransferPhase::kStopped; }));
      });
    };
    for (int i = 0; i < soak::countOr(1) && !HasFailure(); ++i) {
      EXPECT_LT(support::bestTime(attempt), kPromptly);
    }
  }

  static std::string url(const std::string& scheme, std::uint16_t port) {
    return scheme + "://127.0.0.1:" + std::to_string(port) + "/film.avi";
  }

  std::function<bool()> hasCome(std::size_t bytes) {
    return [this, bytes] {
      const std::size_t latest = server_.connectionCount();
      return latest > 0 && server_.connection(latest - 1).received.size() >= bytes &&
             !server_.connection(latest - 1).ended;
    };
  }

  support::ScriptedServer server_;
  const support::SilentPort silent_;
  const Script greets_ = Script().readBytes(1).stall();
  const Script listens_ = Script().readRequest().stall();
  const Script begins_ = Script()
                             .readRequest()
                             .send(support::okResponse(filmBytes(kSize)).substr(0, kSize / 2))
                             .stall();
};

TEST_F(TimeLimits, AConnectThatNobodyAnswersEnds) { expectKept(url("http", silent_.port())); }

TEST_F(TimeLimits, AHandshakeThatNobodyAnswersEnds) {
  server_.always(greets_);
  expectKept(url("https", server_.port()));
}

TEST_F(TimeLimits, ARequestThatNobodyAnswersEnds) {
  server_.always(listens_);
  expectKept(url("http", server_.port()));
}

TEST_F(TimeLimits, AFilmThatStopsComingEnds) {
  server_.always(begins_);
  expectKept(url("http", server_.port()));
}

TEST_F(TimeLimits, AConnectThatIsStoppedEnds) {
  expectStopped(url("http", silent_.port()),
                [this] { return support::isConnecting(silent_.port()); });
}

TEST_F(TimeLimits, AHandshakeThatIsStoppedEnds) {
  server_.always(greets_);
  expectStopped(url("https", server_.port()), hasCome(1));
}

TEST_F(TimeLimits, ARequestThatIsStoppedEnds) {
  server_.always(listens_);
  expectStopped(url("http", server_.port()), hasCome(1));
}

TEST_F(TimeLimits, AFilmThatIsStoppedEnds) {
  server_.always(begins_);
  expectStopped(url("http", server_.port()), hasCome(1));
}

}  // namespace
}  // namespace playerx::transfers
