#include <gtest/gtest.h>
#include <openssl/err.h>

#include <chrono>
#include <iostream>
#include <string>

#include "tests/soak/Count.h"
#include "tests/soak/memory/FailingMalloc.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TestPki.h"
#include "tests/unit/kvsc/ExchangeTesting.h"

namespace soak {
namespace {

using Lasting = FailingMalloc::Lasting;

/// A HEAD over TLS, as the module asks for the size of a film.
class ClientMemory : public Exchange {
 protected:
  ClientMemory() {
    secure_.always(
        support::Script::answer(support::bareResponse("200 OK", "Content-Length: 9\r\n")));
  }

  kvsc::HttpErrorIds ask() {
    kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_FAILED;
    client_.httpHead(url_, 0, &result, &session_, "", "", kvsc::SSLV3);
    return result;
  }

  /// Whether an allocation has failed; the time that the HEAD may take is bounded.
  bool askFailing(long passed, Lasting lasting) {
    const auto start = std::chrono::steady_clock::now();
    kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_FAILED;
    bool hasFailed = false;
    {
      const FailingMalloc failing(passed, lasting);
      result = ask();
      hasFailed = failing.hasFailed();
    }
    ERR_clear_error();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10)) << passed;
    EXPECT_EQ(session_.getConnect(), nullptr) << passed;
    EXPECT_EQ(session_.getSsl(), nullptr) << passed;
    EXPECT_TRUE(hasFailed || result == kvsc::HTTP_ERROR_NONE) << client_.getErrorString();
    return hasFailed;
  }

  support::ScriptedServer secure_{support::TlsSettings{.identity = support::pki::selfSigned()}};
  const std::string url_ = secure_.url("/a/path/that/is/not/short", "127.0.0.1");
};

TEST_F(ClientMemory, TooLittleEndsAHeadOverTlsWithAnOutcome) {
  ASSERT_EQ(ask(), kvsc::HTTP_ERROR_NONE) << client_.getErrorString();
  for (const Lasting lasting : {Lasting::kOnce, Lasting::kForEver}) {
    const long most = countOr(400);
    long passed = 0;
    long tried = 0;
    for (; askFailing(passed, lasting) && !HasFailure(); ++tried) passed += 1 + passed / most;
    EXPECT_GT(passed, 100);
    std::cout << passed << " allocations, of which " << tried << " were made to fail" << std::endl;
  }
  EXPECT_EQ(ask(), kvsc::HTTP_ERROR_NONE) << client_.getErrorString();
}

}  // namespace
}  // namespace soak
