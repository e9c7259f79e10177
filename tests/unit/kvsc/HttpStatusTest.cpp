#include <gtest/gtest.h>

#include "kvsc/HttpStatus.h"

namespace kvsc {
namespace {

TEST(HttpStatusTest, EveryClassHasItsOutcome) {
  for (int code : {0, -1, 100, 199, 200, 206, 299}) {
    EXPECT_EQ(outcomeOfStatus(code), HTTP_ERROR_NONE) << code;
  }
  for (int code : {300, 301, 303, 305, 399, 400, 404, 500, 503, 600, 1000}) {
    EXPECT_EQ(outcomeOfStatus(code), HTTP_ERROR_FAILED) << code;
  }
  EXPECT_EQ(outcomeOfStatus(304), HTTP_ERROR_NOT_MODIFIED);
}

TEST(HttpStatusTest, FourCodesAreRedirects) {
  for (int code = 0; code < 600; ++code) {
    EXPECT_EQ(isRedirect(code), code == 301 || code == 302 || code == 303 || code == 307) << code;
  }
}

TEST(HttpStatusTest, TwoOfThemAreMoves) {
  for (int code = 0; code < 600; ++code) {
    EXPECT_EQ(isMoved(code), code == 301 || code == 302) << code;
  }
}

}  // namespace
}  // namespace kvsc
