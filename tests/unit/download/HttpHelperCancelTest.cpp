// Ends that come while a transfer waits for a server that does not answer.

#include <functional>

#include "tests/support/Loopback.h"
#include "tests/support/Promptness.h"
#include "tests/unit/download/HttpHelperFixture.h"

namespace {

using support::Gate;
using support::Script;

enum class Place { kConnect, kHandshake, kAnswer };

/// A transfer that hangs, what ends it, and how it returns then.
struct HangingTransfer {
  const char* name;
  HttpResult* (*run)(HttpHelper&);
  Place place;
  void (*end)(HttpHelper&);
  HttpResultType result;
};

std::ostream& operator<<(std::ostream& out, const HangingTransfer& row) { return out << row.name; }

constexpr auto kGet = [](HttpHelper& helper) { return helper.get(""); };
constexpr auto kPost = [](HttpHelper& helper) { return helper.post(); };
constexpr auto kGetInfo = [](HttpHelper& helper) { return helper.getInfo(); };
constexpr auto kCancel = [](HttpHelper& helper) { helper.cancelDownload(); };
constexpr auto kCancelAnother = [](HttpHelper&) { HttpHelper().cancelDownload(); };
constexpr auto kAbort = [](HttpHelper& helper) { helper.abort(); };

const HangingTransfer kHangingTransfers[] = {
    {"AGetCancelledDuringConnect", kGet, Place::kConnect, kCancel, HTTP_RESULT_FAILED},
    {"AGetAbortedDuringConnect", kGet, Place::kConnect, kAbort, HTTP_RESULT_FAILED},
    {"AGetCancelledDuringHandshake", kGet, Place::kHandshake, kCancel, HTTP_RESULT_FAILED},
    {"AGetAbortedDuringHandshake", kGet, Place::kHandshake, kAbort, HTTP_RESULT_FAILED},
    {"AGetCancelledBeforeTheFirstPiece", kGet, Place::kAnswer, kCancel, HTTP_RESULT_FAILED},
    {"AGetAbortedBeforeTheFirstPiece", kGet, Place::kAnswer, kAbort, HTTP_RESULT_FAILED},
    {"AGetCancelledThroughAnyOtherHelper", kGet, Place::kAnswer, kCancelAnother,
     HTTP_RESULT_FAILED},
    {"APostCancelledBeforeTheFirstPiece", kPost, Place::kAnswer, kCancel, HTTP_RESULT_OK},
    {"AQuestionCancelledBeforeItsAnswer", kGetInfo, Place::kAnswer, kCancel, HTTP_RESULT_FAILED},
};

class HttpHelperEnd : public support::HttpHelperTest,
                      public testing::WithParamInterface<HangingTransfer> {
 protected:
  /// The address of a transfer that is going to hang at the row's place.
  std::string hangingUrl() {
    if (GetParam().place == Place::kConnect) {
      return support::loopbackUrl("http", "127.0.0.1", silent_.port(), "/film.avi");
    }
    const char* const scheme = GetParam().place == Place::kHandshake ? "https" : "http";
    server_.next(Script().readBytes(1).announce(gate()).stall());
    return support::loopbackUrl(scheme, "localhost", server_.port(), "/film.avi");
  }

  bool waitUntilItHangs() {
    if (GetParam().place != Place::kConnect) return gates_.back().wait();
    return support::waitFor([this] { return support::isConnecting(silent_.port()); });
  }

  /// From the call that ends the transfer to its return.
  std::chrono::milliseconds timeToEnd() {
    HttpHelper helper;
    helper.setup(hangingUrl(), "");
    helper.setCallbacks(&receiver_);
    auto result = std::async(std::launch::async, [&] { return Result(GetParam().run(helper)); });
    EXPECT_TRUE(waitUntilItHangs());
    return support::timeOf([&] {
      GetParam().end(helper);
      EXPECT_EQ(result.get()->getResult(), GetParam().result);
    });
  }

 private:
  const support::SilentPort silent_;
};

TEST_P(HttpHelperEnd, IsPromptAndSilent) {
  EXPECT_LT(support::bestTime([this] { return timeToEnd(); }), support::kPromptly);
  EXPECT_THAT(log_.lines(), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Of, HttpHelperEnd, testing::ValuesIn(kHangingTransfers),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
