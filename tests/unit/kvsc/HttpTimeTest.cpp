#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "kvsc/HttpTime.h"

namespace kvsc {
namespace {

/// Sets the process's time zone for a test.
class HttpTimeTest : public testing::Test {
 protected:
  HttpTimeTest() {
    const char* old = std::getenv("TZ");
    if (old != nullptr) oldZone_ = old;
    useZone("UTC0");
  }
  ~HttpTimeTest() override { useZone(oldZone_.c_str()); }

  static void useZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
  }

 private:
  std::string oldZone_ = "UTC0";
};

TEST_F(HttpTimeTest, ADateIsRead) {
  const struct {
    const char* text;
    std::time_t time;
    const char* what;
  } rows[] = {
      {"Tue, 05 Mar 2024 10:00:00 GMT", 1709632800, "any date"},
      {"Thu, 01 Jan 1970 00:00:01 GMT", 1, "the first one"},
      {"Tue, 5 Mar 2024 10:00:00 GMT", 1709632800, "the day needs no zero in front"},
      {"Tue, 05 Mar 2024 10:00:00", 1709632800, "the zone may be missing"},
      {"Sunday, 05 Mar 2024 10:00:00 GMT", 1709632800, "the weekday is not checked"},
      {"Xyz 05 Mar 2024 10:00:00 GMT", 1709632800, "the weekday may be any word"},
  };
  for (const auto& row : rows) EXPECT_EQ(parseHttpTime(row.text), row.time) << row.what;
}

TEST_F(HttpTimeTest, EveryMonthIsKnown) {
  const char* const months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  for (int month = 0; month < 12; ++month) {
    const std::string text = std::string("Mon, 01 ") + months[month] + " 2023 00:00:00 GMT";
    const std::time_t time = parseHttpTime(text);
    EXPECT_EQ(std::gmtime(&time)->tm_mon, month) << text;
  }
}

TEST_F(HttpTimeTest, TheTextCountsAsLocalTimeWhateverItsZone) {
  useZone("EST5");
  EXPECT_EQ(parseHttpTime("Tue, 05 Mar 2024 10:00:00 GMT"), 1709632800 + 5 * 3600);
}

TEST_F(HttpTimeTest, SummerTimeIsWhatTheZoneSaysForThatDay) {
  useZone("CET-1CEST,M3.5.0,M10.5.0/3");
  EXPECT_EQ(parseHttpTime("Mon, 01 Jul 2024 12:00:00 GMT"), 1719828000);
  EXPECT_EQ(parseHttpTime("Mon, 01 Jan 2024 12:00:00 GMT"), 1704106800);
}

TEST_F(HttpTimeTest, FewerThanSevenFieldsAreNoTime) {
  for (const char* text :
       {"", "Tue,", "Tue, 05", "Tue, 05 Mar", "Tue, 05 Mar 2024", "Tue, 05 Mar 2024 10",
        "Tue, 05 Mar 2024 10:00", "Tue, 05 Mar 2024 10:00:", "Tuesday, 05-Mar-24 10:00:00 GMT",
        "Tue Mar  5 10:00:00 2024", "garbage", "Tue, x Mar 2024 10:00:00"}) {
    EXPECT_EQ(parseHttpTime(text), 0) << text;
  }
}

TEST_F(HttpTimeTest, AnUnknownMonthAndNumbersThatDoNotFitAreNoTime) {
  for (const char* text :
       {"Tue, 05 March 2024 10:00:00 GMT", "Tue, 05 mar 2024 10:00:00 GMT",
        "Tue, 05 Mar 99999999999 10:00:00 GMT", "Tue, 05 Mar -2147483648 10:00:00 GMT",
        "Tue, 05 Mar 2024 99999999999:00:00 GMT"}) {
    EXPECT_EQ(parseHttpTime(text), 0) << text;
  }
}

TEST_F(HttpTimeTest, WordsOfAnyLengthAreBounded) {
  const std::string endless(1 << 20, 'W');
  EXPECT_EQ(parseHttpTime(endless + " 05 Mar 2024 10:00:00 GMT"), 1709632800);
  EXPECT_EQ(parseHttpTime("Tue, 05 " + endless + " 2024 10:00:00 GMT"), 0);
}

TEST_F(HttpTimeTest, ATimeIsWrittenWithoutAZeroInFrontOfTheDay) {
  EXPECT_EQ(formatHttpTime(1709632800), "Tue, 5 Mar 2024 10:00:00 GMT");
  EXPECT_EQ(formatHttpTime(1703462400), "Mon, 25 Dec 2023 00:00:00 GMT");
}

TEST_F(HttpTimeTest, WhatIsWrittenIsReadBackInEveryZone) {
  for (const char* zone : {"UTC0", "EST5", "CET-1CEST,M3.5.0,M10.5.0/3"}) {
    useZone(zone);
    for (std::time_t time = 1; time < 2'000'000'000; time += 98'765'432) {
      EXPECT_EQ(parseHttpTime(formatHttpTime(time)), time) << zone;
    }
  }
}

}  // namespace
}  // namespace kvsc
