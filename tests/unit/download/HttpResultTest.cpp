#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <type_traits>

#include "download/HttpCallback.h"
#include "download/HttpResult.h"
#include "tests/support/VtableSlots.h"

namespace {

struct Receiver : HttpCallback {
  void headerReceived(const std::string&) override {}
  size_t bodyReceived(const char*, size_t length) override { return length; }
  void transferComplete(int) override {}
  void transferBroke(int) override {}
};

template <class Getter>
using Yields = std::invoke_result_t<Getter, const HttpResult&>;

static_assert(std::is_same_v<std::underlying_type_t<HttpResultType>, std::int32_t>);
// Copies, which stay whatever becomes of the result.
static_assert(std::is_same_v<Yields<decltype(&HttpResult::getRedirection)>, std::string>);
static_assert(std::is_same_v<Yields<decltype(&HttpResult::getErrorDescription)>, std::string>);

TEST(HttpResult, HasFixedValues) {
  EXPECT_EQ(HTTP_RESULT_OK, 0);
  EXPECT_EQ(HTTP_RESULT_FAILED, 1);
  EXPECT_EQ(HTTP_RESULT_REDIRECT, 2);
  EXPECT_TRUE(std::has_virtual_destructor_v<HttpResult>);
}

TEST(HttpResult, IsAFailureAtFirst) {
  const HttpResult result;
  EXPECT_EQ(result.getResult(), HTTP_RESULT_FAILED);
  EXPECT_EQ(result.getReturnCode(), 0u);
  EXPECT_EQ(result.getContentLength(), 0u);
  EXPECT_EQ(result.getRedirection(), "");
  EXPECT_EQ(result.getErrorDescription(), "");
  EXPECT_EQ(result.getHttpCallbacks(), nullptr);
}

TEST(HttpResult, KeepsWhatIsSet) {
  HttpResult result;
  Receiver receiver;
  result.setResult(HTTP_RESULT_REDIRECT);
  result.setReturnCode(4294967295u);
  result.setContentLength(18446744073709551615ull);
  result.setRedirection("http://h/\r\n");
  result.setErrorDescription("no");
  result.setHttpCallbacks(&receiver);
  EXPECT_EQ(result.getResult(), HTTP_RESULT_REDIRECT);
  EXPECT_EQ(result.getReturnCode(), 4294967295u);
  EXPECT_EQ(result.getContentLength(), 18446744073709551615ull);
  EXPECT_EQ(result.getRedirection(), "http://h/\r\n");
  EXPECT_EQ(result.getErrorDescription(), "no");
  EXPECT_EQ(result.getHttpCallbacks(), &receiver);
}

TEST(HttpCallback, HasItsOperationsInOrder) {
  EXPECT_EQ(support::slotOf(&HttpCallback::headerReceived), 2);
  EXPECT_EQ(support::slotOf(&HttpCallback::bodyReceived), 3);
  EXPECT_EQ(support::slotOf(&HttpCallback::transferComplete), 4);
  EXPECT_EQ(support::slotOf(&HttpCallback::transferBroke), 5);
}

}  // namespace
