#include <gtest/gtest.h>

#include <cerrno>

#include "playerx/app/reasons/FailureExplainer.h"
#include "playerx/app/reasons/FailureReason.h"
#include "playerx/app/reasons/ProbeReason.h"
#include "playerx/app/reasons/TransferReason.h"

namespace playerx {
namespace {

ProbeResult probe(const CurlEnd& end, long status = 0, std::int64_t length = -1) {
  return {end, status, length, "films.test", ""};
}

std::string codeOf(const ProbeResult& result) {
  const auto reason = reasonFromProbe(result);
  return reason ? reason->code : "";
}

TEST(FailureReasonTest, EachWayToFailHasACodeOfItsOwn) {
  EXPECT_EQ(codeOf(probe({CURLE_COULDNT_RESOLVE_HOST})), "no_such_host");
  EXPECT_EQ(codeOf(probe({CURLE_COULDNT_CONNECT, 0, ECONNREFUSED})), "refused");
  EXPECT_EQ(codeOf(probe({CURLE_PEER_FAILED_VERIFICATION})), "certificate");
  EXPECT_EQ(codeOf(probe({CURLE_SSL_CONNECT_ERROR})), "tls");
  EXPECT_EQ(codeOf(probe({CURLE_OPERATION_TIMEDOUT})), "timeout");
  EXPECT_EQ(codeOf(probe({CURLE_TOO_MANY_REDIRECTS})), "redirect_loop");
  EXPECT_EQ(codeOf(probe({CURLE_GOT_NOTHING})), "bad_answer");
  EXPECT_EQ(codeOf(probe({CURLE_FAILED_INIT})), "internal");
  EXPECT_EQ(codeOf(probe({CURLE_OK}, 404)), "http_404");
  EXPECT_EQ(codeOf(probe({CURLE_OK}, 403)), "http_403");
  EXPECT_EQ(codeOf(probe({CURLE_OK}, 500)), "http_500");
  EXPECT_EQ(codeOf(probe({CURLE_OK}, 418)), "http_418");
  EXPECT_EQ(codeOf(probe({CURLE_OK}, 200)), "no_length");
  EXPECT_EQ(codeOf(probe({CURLE_OK}, 200, 0)), "empty_file");
}

TEST(FailureReasonTest, AServerThatAnswersAsItShouldExplainsNothing) {
  EXPECT_EQ(reasonFromProbe(probe({CURLE_OK}, 200, 5)), std::nullopt);
}

TEST(FailureReasonTest, ASecondLookSaysWhatATransferThatEndedSoSays) {
  using enum TransferFailure;
  const CurlEnd ends[] = {{CURLE_SSL_CACERT_BADFILE},
                          {CURLE_TOO_MANY_REDIRECTS},
                          {CURLE_SSL_CONNECT_ERROR},
                          {CURLE_COULDNT_CONNECT, 0, ETIMEDOUT},
                          {CURLE_PROXY},
                          {CURLE_UNSUPPORTED_PROTOCOL, 1},
                          {CURLE_FAILED_INIT},
                          {CURLE_RECV_ERROR, 0, 0, 407}};
  for (const CurlEnd& end : ends) {
    TransferReport report;
    report.failure = failureOf(end);
    EXPECT_EQ(reasonFromProbe(probe(end)), reasonFromTransfer(report, "films.test")) << end.code;
  }
}

TEST(FailureReasonTest, AQuestionThatBreaksOffHasNoProperAnswer) {
  for (const CURLcode code : {CURLE_PARTIAL_FILE, CURLE_RECV_ERROR, CURLE_GOT_NOTHING}) {
    EXPECT_EQ(reasonFromProbe(probe({code})), badAnswer("films.test"));
  }
}

TEST(FailureReasonTest, ALackOfSpaceForAnUnknownSizeIsAskedAbout) {
  ItemState item;
  EXPECT_TRUE(isWorthAsking(item, noSpaceAt("/m")));
  EXPECT_FALSE(isWorthAsking(item, servicesUnavailable()));
  item.size = 5;
  EXPECT_FALSE(isWorthAsking(item, noSpaceAt("/m")));
  item = ItemState{};
  item.ticket = "t";
  EXPECT_FALSE(isWorthAsking(item, noSpaceAt("/m")));
}

TEST(FailureReasonTest, OnlyNonsenseOverrulesALackOfSpace) {
  const FailureReason space = noSpaceAt("/m");
  EXPECT_EQ(weigh(space, badAnswer("h")), badAnswer("h"));
  EXPECT_EQ(weigh(space, reasonFromStatus(500, "h")), space);
  EXPECT_EQ(weigh(space, std::nullopt), space);
  EXPECT_EQ(weigh(std::nullopt, reasonFromStatus(500, "h")), reasonFromStatus(500, "h"));
  EXPECT_EQ(weigh(std::nullopt, std::nullopt), unexplained());
}

TEST(FailureReasonTest, SentencesNameTheHost) {
  EXPECT_EQ(reasonFromProbe(probe({CURLE_COULDNT_RESOLVE_HOST}))->sentence,
            "There is no host named films.test; check the address and the network connection.");
  EXPECT_NE(reasonFromStatus(404, "films.test").sentence.find("films.test"), std::string::npos);
}

TEST(FailureReasonTest, NoticesOfTheModuleGoBeforeASecondLook) {
  ItemState item;
  item.url = "http://films.test/a.avi";
  EXPECT_EQ(reasonFromNotices(item, {{Notice::kBroken, "/m/a.avi"}}, ""), std::nullopt);
  EXPECT_EQ(reasonFromNotices(item, {{Notice::kNoSpace, "/m"}}, ""), noSpaceAt("/m"));
  EXPECT_EQ(reasonFromNotices(item, {{Notice::kNotAuthorized, "no", 7}}, "")->code,
            "not_authorized");
}

TEST(FailureReasonTest, TheServicesWordsExplainAnItemWithATicketOnly) {
  ItemState item;
  item.url = "http://films.test/a.avi";
  EXPECT_EQ(reasonFromNotices(item, {}, "No."), std::nullopt);
  item.ticket = "t";
  EXPECT_EQ(reasonFromNotices(item, {}, "No."), (FailureReason{"services", "No."}));
}

TEST(FailureReasonTest, ADeclinedSlotIsNoLackOfServices) {
  ItemState item;
  item.ticket = "t";
  EXPECT_EQ(reasonFromNotices(item, {{Notice::kSlotDeclined, ""}}, ""),
            (FailureReason{"slots_taken",
                           "All slots are taken and none was given up; run `get` in a terminal "
                           "and choose one."}));
}

TEST(FailureReasonTest, ServicesThatAnswerAreNotReady) {
  const ProbeResult answered = probe({CURLE_OK}, 200, 15);
  const ProbeResult silent = probe({CURLE_COULDNT_CONNECT});
  EXPECT_EQ(reasonOfServices("http://s", answered), servicesNotReady());
  EXPECT_EQ(reasonOfServices("http://s", silent), servicesUnavailable());
  EXPECT_EQ(reasonOfServices("", silent), servicesNotNamed());
}

TEST(FailureReasonTest, ErrorsOfThePlayerItselfAreNoRefusals) {
  EXPECT_EQ(notAuthorized(7, "No.").sentence,
            "The online services do not allow this download (error 7: No.).");
  EXPECT_EQ(notAuthorized(-2, "The online services gave no proper answer.").sentence,
            "The online services gave no proper answer. This protected film cannot be downloaded "
            "without them; retry it later.");
}

TEST(FailureReasonTest, ThePasswordOfAProtectedFilmHasExpired) {
  ItemState item;
  const FailureReason refused = reasonFromStatus(401, "films.test");
  EXPECT_EQ(wordedFor(item, refused), refused);
  item.ticket = "t";
  EXPECT_EQ(wordedFor(item, refused), accessExpired());
  EXPECT_EQ(wordedFor(item, noSpaceAt("/m")), noSpaceAt("/m"));
}

TEST(FailureReasonTest, AFolderThatCannotBeIsNoLackOfSpace) {
  const ItemState item;
  EXPECT_EQ(reasonFromNotices(item, {{Notice::kNoSpace, "/proc/films"}}, ""),
            folderUnusable("/proc/films"));
}

TEST(FailureReasonTest, AnItemWithoutAddressLacksItsTicketOrTheServices) {
  ItemState item;
  item.ticket = "t";
  EXPECT_EQ(reasonFromNotices(item, {}, ""), std::nullopt);
  EXPECT_EQ(reasonFromNotices(ItemState{}, {}, "")->code, "no_address");
}

}  // namespace
}  // namespace playerx
