#include <gtest/gtest.h>

#include <optional>

#include "plugin/ProgressReports.h"

namespace plugin {
namespace {

TEST(ProgressReports, AReportIsTheNewestUntilItIsRecorded) {
  ProgressReports reports;
  EXPECT_EQ(reports.newest(1), std::nullopt);
  const auto number = reports.begin(1, 50);
  EXPECT_EQ(reports.newest(1), 50);
  EXPECT_TRUE(reports.end(number));
  EXPECT_EQ(reports.newest(1), std::nullopt);
}

TEST(ProgressReports, ReportsThatEndInTheirOrderAreAllRecorded) {
  ProgressReports reports;
  const auto first = reports.begin(1, 50);
  const auto second = reports.begin(1, 40);
  EXPECT_EQ(reports.newest(1), 40) << "the last one, not the greatest";
  EXPECT_TRUE(reports.end(first));
  EXPECT_EQ(reports.newest(1), 40);
  EXPECT_TRUE(reports.end(second));
  EXPECT_EQ(reports.newest(1), std::nullopt);
}

TEST(ProgressReports, AReportThatWasOvertakenIsNotRecorded) {
  ProgressReports reports;
  const auto first = reports.begin(1, 50);
  const auto second = reports.begin(1, 51);
  EXPECT_TRUE(reports.end(second));
  EXPECT_EQ(reports.newest(1), std::nullopt);
  EXPECT_FALSE(reports.end(first));
}

TEST(ProgressReports, ItemsDoNotOvertakeEachOther) {
  ProgressReports reports;
  const auto first = reports.begin(1, 50);
  const auto other = reports.begin(2, 60);
  EXPECT_TRUE(reports.end(other));
  EXPECT_EQ(reports.newest(1), 50);
  EXPECT_TRUE(reports.end(first));
}

TEST(ProgressReports, AReportEndsOnce) {
  ProgressReports reports;
  const auto number = reports.begin(1, 50);
  EXPECT_TRUE(reports.end(number));
  EXPECT_FALSE(reports.end(number));
}

}  // namespace
}  // namespace plugin
