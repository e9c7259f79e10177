#include <gtest/gtest.h>

#include <cstdlib>

#include "playerx/app/reasons/TransferReason.h"

namespace playerx::reasons {
namespace {

TransferReport broken(TransferFailure failure, const std::string& detail = "") {
  TransferReport report;
  report.failure = failure;
  report.requestedPath = "/films/a.avi";
  report.detail = detail;
  return report;
}

const std::string kAddress = "http://films.test/a.avi";

std::string sentenceOf(const TransferReport& report) {
  return explainTransfer(report, kAddress).value().sentence();
}

TEST(TransferReasonTest, ATransferThatDidNotBreakGivesNone) {
  EXPECT_EQ(explainTransfer(broken(TransferFailure::kNone), kAddress), std::nullopt);
}

TEST(TransferReasonTest, AFullDiskIsNamedByTheFolderThatLiesOnIt) {
  EXPECT_EQ(sentenceOf(broken(TransferFailure::kNoSpaceForFilm)),
            "There is no room for the film in /films; free some space there and retry, which goes "
            "on where it stopped, or choose another folder with --media.");
  EXPECT_EQ(sentenceOf(broken(TransferFailure::kNoSpace)),
            "The disk with the folder for unfinished films is full; free some space there and "
            "retry, which goes on where it stopped, or choose another folder with --data.");
}

TEST(TransferReasonTest, ASilentServerIsToldFromOneThatStops) {
  TransferReport report = broken(TransferFailure::kStalled);
  EXPECT_EQ(sentenceOf(report), "films.test sends nothing; retry later.");
  report.arrived = 1;
  EXPECT_EQ(sentenceOf(report),
            "films.test stopped sending; what has arrived is kept, retry later.");
}

TEST(TransferReasonTest, ALoopOfRedirectsIsSaidToBeOne) {
  EXPECT_EQ(sentenceOf(broken(TransferFailure::kRedirectLoop)),
            "films.test sends the player round in circles; ask the provider for another address.");
}

TEST(TransferReasonTest, ABadAddressIsToldWhatIsBadAboutIt) {
  const TransferReport report = broken(TransferFailure::kUnsupportedAddress);
  EXPECT_EQ(explainTransfer(report, "http://films.test/a b.avi")->reason,
            Reason::kUnescapedAddress);
  EXPECT_EQ(explainTransfer(report, "http://films.test:0/a.avi")->reason, Reason::kBadPort);
  EXPECT_EQ(explainTransfer(report, "ftp://films.test/a.avi")->reason,
            reasonOf(TransferFailure::kUnsupportedAddress));
}

TEST(TransferReasonTest, APeerThatDoesNotAcceptConnectionsIsNamedWithItsPort) {
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

TEST(TransferReasonTest, AFolderThatDoesNotTakeTheFilmIsNamed) {
  EXPECT_EQ(explainTransfer(broken(TransferFailure::kMediaFolder), kAddress)->happened,
            "The film cannot be written to /films/a.avi");
}

TEST(TransferReasonTest, TechnicalWordsStandInBrackets) {
  EXPECT_EQ(sentenceOf(broken(TransferFailure::kNetwork, "Network unreachable")),
            "films.test could not be reached (Network unreachable); check the network connection, "
            "and try again later.");
  EXPECT_EQ(sentenceOf(broken(TransferFailure::kInternal)),
            "The film could not be fetched from films.test; try again later.");
}

TEST(TransferReasonTest, AStatusIsNamedWithTheHost) {
  EXPECT_EQ(explainTransfer(broken(failureOfStatus(404)), kAddress),
            explain(reasonOfStatus(404), {.host = "films.test"}));
}

}  // namespace
}  // namespace playerx::reasons
