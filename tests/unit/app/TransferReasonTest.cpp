#include <gtest/gtest.h>

#include "playerx/app/TransferReason.h"

namespace playerx {
namespace {

TransferReport broken(TransferFailure failure, const std::string& detail = "") {
  TransferReport report;
  report.failure = failure;
  report.wishedPath = "/films/a.avi";
  report.detail = detail;
  return report;
}

std::string sentenceOf(const TransferReport& report) {
  return reasonFromTransfer(report, "films.test").value().sentence;
}

TEST(TransferReasonTest, ATransferThatDidNotBreakGivesNone) {
  EXPECT_EQ(reasonFromTransfer(broken(TransferFailure::kNone), "films.test"), std::nullopt);
}

TEST(TransferReasonTest, AFullDiskIsNamedByTheFolderThatLiesOnIt) {
  EXPECT_EQ(sentenceOf(broken(TransferFailure::kNoSpace, "/films/a.avi: No space left on device")),
            "There is no room for the film in /films; what has arrived is kept: free some space "
            "there and retry, or choose another folder with --media.");
  EXPECT_EQ(sentenceOf(broken(TransferFailure::kNoSpace, "/data/partial/1.part: No space left")),
            "The disk with the folder for unfinished films is full; what has arrived is kept: "
            "free some space there and retry, or choose another folder with --data.");
}

TEST(TransferReasonTest, ABadRedirectIsSaidAsTheSecondLookSaysIt) {
  EXPECT_EQ(reasonFromTransfer(broken(TransferFailure::kBadRedirect), "films.test"),
            badRedirect("films.test"));
}

TEST(TransferReasonTest, ALoopOfRedirectsIsSaidToBeOne) {
  EXPECT_EQ(sentenceOf(broken(TransferFailure::kRedirectLoop)),
            "films.test sends the player round in circles; ask the provider for another address.");
}

TEST(TransferReasonTest, TechnicalWordsStandInBrackets) {
  EXPECT_EQ(sentenceOf(broken(TransferFailure::kNetwork, "Network unreachable")),
            "films.test could not be reached (Network unreachable); check the network connection, "
            "and try again later.");
  EXPECT_EQ(sentenceOf(broken(TransferFailure::kInternal)),
            "The film could not be fetched from films.test; try again later.");
}

TEST(TransferReasonTest, AStatusIsSaidAsTheSecondLookSaysIt) {
  EXPECT_EQ(reasonFromTransfer(broken(failureOfStatus(404)), "films.test"),
            reasonFromStatus(404, "films.test"));
}

}  // namespace
}  // namespace playerx
