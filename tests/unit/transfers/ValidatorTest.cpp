#include <gtest/gtest.h>

#include "playerx/transfers/ResponseHead.h"
#include "playerx/transfers/Validator.h"

namespace playerx::transfers {
namespace {

constexpr char kDate[] = "Wed, 01 Jan 2025 12:00:00 GMT";
constexpr char kSecondsBefore[] = "Wed, 01 Jan 2025 11:59:01 GMT";
constexpr char kMinuteBefore[] = "Wed, 01 Jan 2025 11:59:00 GMT";

Validator validator(const std::string& etag, const std::string& modified = "",
                    const std::string& date = kDate) {
  ResponseHead head;
  head.addLine("HTTP/1.1 200 OK\r\n");
  if (!etag.empty()) head.addLine("ETag: " + etag + "\r\n");
  if (!modified.empty()) head.addLine("Last-Modified: " + modified + "\r\n");
  if (!date.empty()) head.addLine("Date: " + date + "\r\n");
  return validatorOf(head);
}

TEST(ValidatorTest, AnEntityTagIsStrongUnlessMarkedWeak) {
  EXPECT_EQ(strongText(validator("\"a\"")), "\"a\"");
  EXPECT_EQ(strongText(validator("W/\"a\"")), "");
}

TEST(ValidatorTest, ADateIsStrongWhenTheFileWasAMinuteOld) {
  EXPECT_EQ(strongText(validator("", kMinuteBefore)), kMinuteBefore);
  EXPECT_EQ(strongText(validator("", kSecondsBefore)), "");
}

TEST(ValidatorTest, ADateIsWeakWhenTheServerDoesNotSayWhenItAnswered) {
  EXPECT_EQ(strongText(validator("", kMinuteBefore, "")), "");
  EXPECT_EQ(strongText(validator("", "long ago")), "");
}

TEST(ValidatorTest, AWeakEntityTagForbidsTheDateBesideIt) {
  EXPECT_EQ(strongText(validator("W/\"a\"", kMinuteBefore)), "");
}

TEST(ValidatorTest, AStrongEntityTagGoesBeforeTheDate) {
  EXPECT_EQ(strongText(validator("\"a\"", kMinuteBefore)), "\"a\"");
}

TEST(ValidatorTest, WhatIsNoEntityTagCountsAsNone) {
  for (const char* etag : {"a", "\"a", "a\"", "\"", "\"a b\"", "\"\xC3\xA4\"", "W/", "w/\"a\""}) {
    EXPECT_EQ(validator(etag).etag, "") << etag;
  }
}

TEST(ValidatorTest, EntityTagsContradictWhenTheyDifferWeakOrStrong) {
  EXPECT_TRUE(contradict(validator("\"a\""), validator("\"b\"")));
  EXPECT_TRUE(contradict(validator("W/\"a\""), validator("W/\"b\"")));
  EXPECT_FALSE(contradict(validator("\"a\""), validator("W/\"a\"")));
}

TEST(ValidatorTest, DatesDecideWhereEntityTagsCannot) {
  EXPECT_TRUE(contradict(validator("", kMinuteBefore), validator("", kSecondsBefore)));
  EXPECT_FALSE(contradict(validator("", kMinuteBefore), validator("", kMinuteBefore)));
  EXPECT_FALSE(contradict(validator("\"a\"", kMinuteBefore), validator("\"a\"", kSecondsBefore)));
  EXPECT_TRUE(contradict(validator("\"a\"", kMinuteBefore), validator("", kSecondsBefore)));
}

TEST(ValidatorTest, NothingContradictsNothing) {
  EXPECT_FALSE(contradict(validator(""), validator("\"a\"", kMinuteBefore)));
  EXPECT_FALSE(contradict(validator("\"a\""), validator("")));
}

}  // namespace
}  // namespace playerx::transfers
