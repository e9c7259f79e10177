#include <gtest/gtest.h>

#include <cstdlib>

#include "playerx/app/reasons/TransferReason.h"

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

TEST(TransferReasonTest, ABadAddressIsToldWhatIsBadAboutIt) {
  TransferReport report = broken(TransferFailure::kUnsupportedAddress);
  report.address = "http://films.test/a b.avi";
  EXPECT_EQ(sentenceOf(report),
            "The address holds a character that must be escaped, such as a space, which is "
            "written %20.");
  report.address = "ftp://films.test/a.avi";
  EXPECT_EQ(sentenceOf(report),
            "The address cannot be used; give one that begins with http:// or https:// and names "
            "a host.");
}

TEST(TransferReasonTest, WhoDoesNotAcceptConnectionsIsNamedWithItsPort) {
  const std::string words = "Failed to connect to films.test port 8080 after 0 ms: Refused";
  EXPECT_EQ(sentenceOf(broken(TransferFailure::kRefused, words)),
            "films.test:8080 does not accept connections; try again when the server is up.");
  ::setenv("all_proxy", "http://films.test:8080/", 1);
  EXPECT_EQ(sentenceOf(broken(TransferFailure::kRefused, words)),
            "The proxy films.test:8080 does not accept connections; check the proxy settings.");
  EXPECT_EQ(sentenceOf(broken(TransferFailure::kTimeout, words)),
            "The proxy films.test:8080 did not answer in time; try again later.");
  ::unsetenv("all_proxy");
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
