#include <gtest/gtest.h>

#include "kvsc/SSLError.h"

namespace kvsc {
namespace {

TEST(SSLErrorTest, AFreshErrorIsEmpty) {
  const SSLError error;
  EXPECT_EQ(error.getFileName(), "");
  EXPECT_EQ(error.getLineNumber(), 0);
  EXPECT_EQ(error.getData(), "");
  EXPECT_EQ(error.getFlags(), 0);
  EXPECT_EQ(error.getHumanReadable(), "");
}

TEST(SSLErrorTest, EachFieldIsKept) {
  SSLError error;
  error.setFileName("ssl.c");
  error.setLineNumber(12);
  error.setData("host");
  error.setFlags(3);
  error.setHumanReadable("error:0A000086");
  EXPECT_EQ(error.getFileName(), "ssl.c");
  EXPECT_EQ(error.getLineNumber(), 12);
  EXPECT_EQ(error.getData(), "host");
  EXPECT_EQ(error.getFlags(), 3);
  EXPECT_EQ(error.getHumanReadable(), "error:0A000086");
}

}  // namespace
}  // namespace kvsc
