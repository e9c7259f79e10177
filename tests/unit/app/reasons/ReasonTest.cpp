#include <gtest/gtest.h>

#include <set>

#include "playerx/app/reasons/Reason.h"

namespace playerx::reasons {
namespace {

TEST(ReasonTest, EachFailureOfATransferHasACodeOfItsOwn) {
  EXPECT_EQ(codeOf(reasonOf(TransferFailure::kNoSuchHost)), "no_such_host");
  EXPECT_EQ(codeOf(reasonOf(TransferFailure::kMediaFolder)), "media_folder");
  std::set<std::string> codes;
  for (int number = 1; number <= static_cast<int>(TransferFailure::kInternal); ++number) {
    codes.insert(codeOf(static_cast<Reason>(number)));
  }
  EXPECT_EQ(codes.size(), static_cast<std::size_t>(TransferFailure::kInternal));
}

TEST(ReasonTest, AStatusIsNamedByItsNumber) {
  EXPECT_EQ(codeOf(reasonOfStatus(404)), "http_404");
  EXPECT_EQ(codeOf(reasonOfStatus(418)), "http_418");
  EXPECT_EQ(codeOf(reasonOfStatus(599)), "http_599");
}

TEST(ReasonTest, NumbersWithoutARowAreFailuresOfThisSide) {
  EXPECT_EQ(codeOf(static_cast<Reason>(99)), "internal");
  EXPECT_EQ(codeOf(static_cast<Reason>(-1)), "internal");
}

TEST(ReasonTest, TheFactsStandInTheSentence) {
  EXPECT_EQ(explain(reasonOf(TransferFailure::kNoSuchHost), {.host = "films.test"}).sentence(),
            "There is no host named films.test; check the address and the network connection.");
  EXPECT_EQ(explain(Reason::kLongText, {.words = "8192", .number = 2}).sentence(),
            "The film of line 2 has a text of more than 8192 characters, so nothing of "
            "this ticket is added.");
}

TEST(ReasonTest, StatusesWithoutASentenceOfTheirOwnAreRefusalsOrTroubleOfTheServer) {
  EXPECT_EQ(explain(reasonOfStatus(418), {.host = "h"}).sentence(), "h refused the film (418).");
  EXPECT_EQ(explain(reasonOfStatus(503), {.host = "h"}).sentence(),
            "h has trouble of its own (503); try again later.");
}

TEST(ReasonTest, TechnicalWordsStandInBrackets) {
  const Reason network = reasonOf(TransferFailure::kNetwork);
  EXPECT_EQ(explain(network, {.host = "h", .words = "No route"}).happened,
            "h could not be reached (No route)");
  EXPECT_EQ(explain(network, {.host = "h"}).happened, "h could not be reached");
}

TEST(ReasonTest, WordsThatAreASentenceGetNoSecondFullStop) {
  EXPECT_EQ(explain(Reason::kServicesSaid, {.words = "No."}).sentence(), "No.");
}

TEST(ReasonTest, AFactIsNotReadForNames) {
  EXPECT_EQ(explain(Reason::kTicketIsFolder, {.host = "h", .place = "{host}"}).sentence(),
            "{host} is a folder.");
}

TEST(ReasonTest, EachFaultOfAnAddressIsAnUnsupportedAddress) {
  for (const auto fault : {AddressFault::kNone, AddressFault::kNotWeb, AddressFault::kBadPort,
                           AddressFault::kUnescaped}) {
    EXPECT_EQ(codeOf(reasonOf(fault)), "unsupported_url");
  }
}

}  // namespace
}  // namespace playerx::reasons
