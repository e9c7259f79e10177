#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "kvsc/TextScanner.h"

namespace kvsc {
namespace {

std::optional<int> numberIn(std::string_view text) { return TextScanner(text).number(); }

TEST(TextScannerTest, WordsAreSeparatedByAnyWhiteSpace) {
  TextScanner scanner(" \t\v\f one\r\ntwo ");
  EXPECT_EQ(scanner.word(), "one");
  EXPECT_EQ(scanner.word(), "two");
  EXPECT_EQ(scanner.word(), std::nullopt);
}

TEST(TextScannerTest, AWordMayHaveAnyLength) {
  const std::string endless(1 << 20, 'x');
  EXPECT_EQ(TextScanner(endless).word(), endless);
}

TEST(TextScannerTest, ANumberMayHaveASign) {
  EXPECT_EQ(numberIn("200"), 200);
  EXPECT_EQ(numberIn("  -5"), -5);
  EXPECT_EQ(numberIn("+7"), 7);
  EXPECT_EQ(numberIn("007"), 7);
}

TEST(TextScannerTest, ANumberEndsWhereItsDigitsEnd) {
  TextScanner scanner("1.1 20x");
  EXPECT_EQ(scanner.number(), 1);
  EXPECT_TRUE(scanner.character('.'));
  EXPECT_EQ(scanner.number(), 1);
  EXPECT_EQ(scanner.number(), 20);
  EXPECT_EQ(scanner.word(), "x");
}

TEST(TextScannerTest, OtherTextIsNoNumber) {
  for (const char* text : {"", "x", "-", "+", "+-1", "-+1", "--1", "- 1"}) {
    EXPECT_EQ(numberIn(text), std::nullopt) << text;
  }
}

TEST(TextScannerTest, ANumberThatDoesNotFitIsRefused) {
  EXPECT_EQ(numberIn("2147483647"), INT_MAX);
  EXPECT_EQ(numberIn("2147483648"), std::nullopt);
  EXPECT_EQ(numberIn("-2147483648"), INT_MIN);
  EXPECT_EQ(numberIn("99999999999999999999999999"), std::nullopt);
}

TEST(TextScannerTest, AFailureConsumesNothing) {
  TextScanner scanner(" abc");
  EXPECT_EQ(scanner.number(), std::nullopt);
  EXPECT_FALSE(scanner.character('a'));
  EXPECT_EQ(scanner.word(), "abc");
}

TEST(TextScannerTest, ACharacterIsNotPrecededByWhiteSpace) {
  TextScanner scanner("10 :20");
  EXPECT_EQ(scanner.number(), 10);
  EXPECT_FALSE(scanner.character(':'));
}

}  // namespace
}  // namespace kvsc
