#include <gtest/gtest.h>

#include <limits>

#include "download/AnnouncedHeader.h"

namespace download {
namespace {

TEST(AnnouncedHeader, TakesTheLengthInAnyCase) {
  EXPECT_EQ(announcedLength("Content-Length: 42\r\n"), 42);
  EXPECT_EQ(announcedLength("CONTENT-LENGTH: 42\r\n"), 42);
  EXPECT_EQ(announcedLength("content-length: 42\r\n"), 42);
}

TEST(AnnouncedHeader, ReadsTheLengthFromPositionFifteenOn) {
  EXPECT_EQ(announcedLength("Content-Length:42\r\n"), 42);
  EXPECT_EQ(announcedLength("Content-Length:  42\r\n"), 42);
  EXPECT_EQ(announcedLength("Content-Length 42\r\n"), 42);
  EXPECT_EQ(announcedLength("Content-Length42\r\n"), 2);
}

TEST(AnnouncedHeader, ReadsNumbersAsAtollDoes) {
  EXPECT_EQ(leadingNumber("42 bytes"), 42);
  EXPECT_EQ(leadingNumber(" \t-7"), -7);
  EXPECT_EQ(leadingNumber("+7"), 7);
  EXPECT_EQ(leadingNumber("0x10"), 0);
  EXPECT_EQ(leadingNumber("none"), 0);
  EXPECT_EQ(leadingNumber(""), 0);
  EXPECT_EQ(leadingNumber("99999999999999999999"), std::numeric_limits<std::int64_t>::max());
}

TEST(AnnouncedHeader, TakesALengthWithoutValueForZero) {
  EXPECT_EQ(announcedLength("Content-Length"), 0);
  EXPECT_EQ(announcedLength("Content-Length:"), 0);
  EXPECT_EQ(announcedLength("Content-Length: \r\n"), 0);
}

TEST(AnnouncedHeader, LeavesOtherLinesAlone) {
  EXPECT_EQ(announcedLength("Content-Lengt: 42\r\n"), std::nullopt);
  EXPECT_EQ(announcedLength(" Content-Length: 42\r\n"), std::nullopt);
  EXPECT_EQ(announcedLength(""), std::nullopt);
  EXPECT_EQ(announcedLocation("Server: nginx\r\n"), std::nullopt);
  EXPECT_EQ(announcedLocation(""), std::nullopt);
}

TEST(AnnouncedHeader, TakesTheLocationInItsExactSpellingOnly) {
  EXPECT_EQ(announcedLocation("Location: http://h/a\r\n"), "http://h/a\r\n");
  EXPECT_EQ(announcedLocation("location: http://h/a\r\n"), std::nullopt);
  EXPECT_EQ(announcedLocation("LOCATION: http://h/a\r\n"), std::nullopt);
}

TEST(AnnouncedHeader, KeepsTheLineEndOfALocation) {
  EXPECT_EQ(announcedLocation("Location: \r\n"), "\r\n");
  EXPECT_EQ(announcedLocation("Location: a\n"), "a\n");
}

TEST(AnnouncedHeader, ReadsTheLocationFromPositionTenOnWhateverStandsBefore) {
  EXPECT_EQ(announcedLocation("Location:http://h/a\r\n"), "ttp://h/a\r\n");
  EXPECT_EQ(announcedLocation("Location:"), "");
  EXPECT_EQ(announcedLocation("Location: "), "");
}

}  // namespace
}  // namespace download
