#include <gtest/gtest.h>

#include "playerx/transfers/ResponseHead.h"
#include "playerx/transfers/ResumePlan.h"

namespace playerx::transfers {
namespace {

PartFacts facts(std::uint64_t size, std::optional<std::uint64_t> total = 1000,
                const std::string& etag = "\"a\"") {
  return {size, total, Validator{etag, "", false}};
}

ResponseHead head(const std::string& status, const std::vector<std::string>& fields = {}) {
  ResponseHead head;
  head.addLine("HTTP/1.1 " + status + "\r\n");
  for (const std::string& field : fields) head.addLine(field + "\r\n");
  return head;
}

const RangeRequest kRest{300, 100, "\"a\""};  // 400 bytes are there

Verdict judge(const ResponseHead& head, const PartFacts& known = facts(400),
              const RangeRequest& request = kRest) {
  return judgeResponse(request, known, head);
}

TEST(PlanRequestTest, NothingThereAsksForTheWhole) {
  EXPECT_EQ(planRequest(facts(0), 100), RangeRequest{});
  EXPECT_FALSE(planRequest(facts(0), 100).isRanged());
}

TEST(PlanRequestTest, TheLastBytesAreAskedForOnceMore) {
  EXPECT_EQ(planRequest(facts(400), 100), (RangeRequest{300, 100, "\"a\""}));
}

TEST(PlanRequestTest, OfALittleHalfIsAskedForOnceMore) {
  EXPECT_EQ(planRequest(facts(7), 100), (RangeRequest{3, 4, "\"a\""}));
  EXPECT_EQ(planRequest(facts(1), 100), (RangeRequest{0, 1, "\"a\""}));
}

TEST(PlanRequestTest, OnlyAStrongValidatorIsACondition) {
  EXPECT_EQ(planRequest(facts(400, 1000, "W/\"a\""), 100).ifRange, "");
  EXPECT_EQ(planRequest(facts(400, 1000, ""), 100).ifRange, "");
}

TEST(JudgeResponseTest, TheRestThatWasAskedForIsAppended) {
  const Verdict verdict = judge(
      head("206 OK", {"Content-Range: bytes 300-999/1000", "Content-Length: 700", "ETag: \"a\""}));
  EXPECT_EQ(verdict.step, Step::kAppend);
  EXPECT_EQ(verdict.total, 1000u);
}

TEST(JudgeResponseTest, AnAnswerThatDoesNotTellTheTotalKeepsTheKnownOne) {
  const Verdict verdict = judge(head("206 OK", {"Content-Range: bytes 300-999/*"}));
  EXPECT_EQ(verdict.step, Step::kAppend);
  EXPECT_EQ(verdict.total, 1000u);
}

TEST(JudgeResponseTest, ATotalIsLearntFromTheRange) {
  const Verdict verdict =
      judge(head("206 OK", {"Content-Range: bytes 300-999/1000"}), facts(400, std::nullopt));
  EXPECT_EQ(verdict.step, Step::kAppend);
  EXPECT_EQ(verdict.total, 1000u);
}

struct Misfit {
  const char* why;
  const char* field;
};
class MisfitTest : public ::testing::TestWithParam<Misfit> {};

TEST_P(MisfitTest, AsksForTheWhole) {
  EXPECT_EQ(judge(head("206 OK", {GetParam().field})).step, Step::kAskForWhole) << GetParam().why;
}

INSTANTIATE_TEST_SUITE_P(
    All, MisfitTest,
    ::testing::Values(Misfit{"begins elsewhere", "Content-Range: bytes 400-999/1000"},
                      Misfit{"begins before", "Content-Range: bytes 0-999/1000"},
                      Misfit{"another total", "Content-Range: bytes 300-1000/1001"},
                      Misfit{"a shorter file", "Content-Range: bytes 300-398/399"},
                      Misfit{"ends beyond the known total", "Content-Range: bytes 300-1000/*"},
                      Misfit{"no range", "ETag: \"a\""},
                      Misfit{"no bytes", "Content-Range: bytes */1000"},
                      Misfit{"nonsense", "Content-Range: lines 1-2/3"},
                      Misfit{"many parts", "Content-Type: multipart/byteranges; boundary=x"}));

TEST(JudgeResponseTest, AnotherValidatorAsksForTheWhole) {
  const std::string range = "Content-Range: bytes 300-999/1000";
  EXPECT_EQ(judge(head("206 OK", {range, "ETag: \"b\""})).step, Step::kAskForWhole);
  EXPECT_EQ(judge(head("206 OK", {range, "ETag: W/\"a\""})).step, Step::kAppend);
}

TEST(JudgeResponseTest, ALengthThatContradictsTheRangeAsksForTheWhole) {
  EXPECT_EQ(
      judge(head("206 OK", {"Content-Range: bytes 300-999/1000", "Content-Length: 699"})).step,
      Step::kAskForWhole);
}

TEST(JudgeResponseTest, APartThatNobodyAskedForIsNonsense) {
  const Verdict verdict =
      judge(head("206 OK", {"Content-Range: bytes 0-999/1000"}), facts(0), RangeRequest{});
  EXPECT_EQ(verdict.step, Step::kBreak);
  EXPECT_EQ(verdict.failure, TransferFailure::kBadAnswer);
}

TEST(JudgeResponseTest, AWebPageIsNoFilm) {
  for (const char* type : {"text/html", "Text/HTML; charset=utf-8"}) {
    const Verdict verdict = judge(head("200 OK", {std::string("Content-Type: ") + type}));
    EXPECT_EQ(verdict.step, Step::kBreak) << type;
    EXPECT_EQ(verdict.failure, TransferFailure::kWebPage) << type;
  }
  EXPECT_EQ(judge(head("200 OK", {"Content-Type: text/htmlx"})).step, Step::kReplace);
}

TEST(JudgeResponseTest, TheWholeFileReplacesWhatIsThere) {
  const Verdict verdict = judge(head("200 OK", {"Content-Length: 2000"}));
  EXPECT_EQ(verdict.step, Step::kReplace);
  EXPECT_EQ(verdict.total, 2000u);
  EXPECT_FALSE(judge(head("200 OK")).total);
}

TEST(JudgeResponseTest, ACodedBodyIsOfNoUse) {
  for (const char* status : {"200 OK", "206 OK"}) {
    const Verdict verdict =
        judge(head(status, {"Content-Encoding: gzip", "Content-Range: bytes 300-999/1000"}));
    EXPECT_EQ(verdict.step, Step::kBreak);
    EXPECT_EQ(verdict.failure, TransferFailure::kBadAnswer);
  }
}

TEST(JudgeResponseTest, NoSuchRangeWithEverythingThereIsTheEnd) {
  EXPECT_EQ(judge(head("416 No", {"Content-Range: bytes */1000"}), facts(1000)).step,
            Step::kEverythingThere);
}

TEST(JudgeResponseTest, NoSuchRangeOtherwiseAsksForTheWhole) {
  const ResponseHead told = head("416 No", {"Content-Range: bytes */1000"});
  EXPECT_EQ(judge(told, facts(400)).step, Step::kAskForWhole);
  EXPECT_EQ(judge(told, facts(1000, std::nullopt)).step, Step::kAskForWhole) << "size alone";
  EXPECT_EQ(judge(head("416 No"), facts(1000)).step, Step::kAskForWhole) << "no total told";
  EXPECT_EQ(judge(head("416 No", {"Content-Range: bytes */1000", "ETag: \"b\""}), facts(1000)).step,
            Step::kAskForWhole);
}

TEST(JudgeResponseTest, NoSuchRangeForTheWholeFileIsAFailure) {
  const Verdict verdict = judge(head("416 No"), facts(0), RangeRequest{});
  EXPECT_EQ(verdict.step, Step::kBreak);
  EXPECT_EQ(statusOfFailure(verdict.failure), 416);
}

TEST(JudgeResponseTest, ABusyServerIsTriedLater) {
  for (const int status : {429, 503}) {
    const Verdict verdict = judge(head(std::to_string(status) + " Busy"));
    EXPECT_EQ(verdict.step, Step::kTryLater);
    EXPECT_EQ(verdict.failure, failureOfStatus(status));
  }
}

TEST(JudgeResponseTest, EveryOtherStatusBreaksUnderItsOwnNumber) {
  for (const int status : {201, 204, 300, 302, 304, 400, 401, 403, 404, 410, 451, 500, 502, 504}) {
    const Verdict verdict = judge(head(std::to_string(status) + " X"));
    EXPECT_EQ(verdict.step, Step::kBreak);
    EXPECT_EQ(static_cast<int>(verdict.failure), status);
  }
}

TEST(JudgeResponseTest, WhatIsNoStatusIsNonsense) {
  for (const char* status : {"", "099 X", "600 X", "999 X"}) {
    EXPECT_EQ(judge(head(status)).failure, TransferFailure::kBadAnswer) << status;
  }
}

}  // namespace
}  // namespace playerx::transfers
