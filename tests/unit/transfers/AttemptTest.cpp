#include <gtest/gtest.h>

#include <random>

#include "playerx/transfers/Attempt.h"
#include "playerx/transfers/PartFinder.h"
#include "tests/support/TempDir.h"
#include "tests/unit/transfers/FilmServer.h"

namespace playerx::transfers {
namespace {

using Kind = AttemptEnd::Kind;

constexpr std::size_t kAttemptSize = 1000;
constexpr std::size_t kThere = 400;
constexpr std::size_t kOverlap = 100;

class AttemptTest : public ::testing::Test {
 protected:
  AttemptTest() {
    request_.address = *parseAddress("http://h/film.avi");
    request_.name = "film.avi";
    request_.movies = folder_ / "movies";
    request_.downloads = folder_ / "parts";
    part_ = openPart(request_).part;
  }
  /// The partial as a session left it that got so many bytes.
  void leave(std::size_t bytes) {
    part_->beginVersion({"\"a\"", "", false}, kAttemptSize);
    part_->file().append(content_.data(), bytes);
    part_->file().flush();
  }
  /// One request, its answer taken in pieces of `piece` bytes.
  AttemptEnd take(const std::vector<std::string>& head, const std::string& body,
                  std::size_t piece = 1 << 20, TransferFailure transport = TransferFailure::kNone) {
    Attempt attempt(*part_, planRequest(part_->facts(), kOverlap));
    bool goesOn = true;
    for (const std::string& line : head) goesOn = goesOn && attempt.headerLine(line + "\r\n");
    for (std::size_t at = 0; goesOn && at < body.size(); at += piece) {
      const std::string bytes = body.substr(at, piece);
      goesOn = attempt.body(bytes.data(), bytes.size()) && attempt.flush();
    }
    return attempt.finish(transport, "");
  }
  std::vector<std::string> restHead() const {
    return {"HTTP/1.1 206 OK", "Content-Range: bytes 300-999/1000", "ETag: \"a\"", ""};
  }
  std::string bytes() const { return support::readFile(part_->paths().bytes()); }

  support::TempDir folder_;
  DownloadRequest request_;
  std::unique_ptr<Part> part_;
  const std::string content_ = filmBytes(kAttemptSize);
};

TEST_F(AttemptTest, TheWholeFileComesInAnyPieces) {
  for (std::size_t piece = 1; piece <= kAttemptSize; piece = piece * 2 + 1) {
    part_->file().cut(0);
    const AttemptEnd end = take({"HTTP/1.1 200 OK", "Content-Length: 1000", ""}, content_, piece);
    EXPECT_EQ(end.kind, Kind::kComplete) << piece;
    EXPECT_EQ(bytes(), content_) << piece;
  }
}

TEST_F(AttemptTest, AHeadThatBreaksOffIsNoFilm) {
  const AttemptEnd end = take({"HTTP/1.1 200 OK", "Content-Le"}, "");
  EXPECT_EQ(end.kind, Kind::kInterrupted);
  EXPECT_EQ(end.failure, TransferFailure::kDropped);
}

TEST_F(AttemptTest, TwoLengthsAreNonsense) {
  const AttemptEnd end =
      take({"HTTP/1.1 200 OK", "Content-Length: 1000", "Content-Length: 5", ""}, content_);
  EXPECT_EQ(end.kind, Kind::kBroken);
  EXPECT_EQ(end.failure, TransferFailure::kBadAnswer);
}

TEST_F(AttemptTest, TheRestComesInAnyPieces) {
  for (std::size_t piece = 1; piece <= kAttemptSize; piece += piece < 120 ? 1 : 110) {
    leave(kThere);
    EXPECT_EQ(take(restHead(), content_.substr(300), piece).kind, Kind::kComplete) << piece;
    EXPECT_EQ(bytes(), content_) << piece;
  }
}

TEST_F(AttemptTest, AWrongByteAnywhereInTheOverlapAppendsNothing) {
  for (std::size_t wrong = 300; wrong < kThere; ++wrong) {
    leave(kThere);
    std::string other = content_;
    other[wrong] = static_cast<char>(other[wrong] + 1);
    EXPECT_EQ(take(restHead(), other.substr(300), 7).kind, Kind::kAskForWhole) << wrong;
    EXPECT_EQ(bytes(), content_.substr(0, kThere)) << wrong;
  }
}

TEST_F(AttemptTest, AnEndWithinTheOverlapProvesNothing) {
  for (std::size_t length = 0; length <= kOverlap; ++length) {
    leave(kThere);
    const AttemptEnd end = take(restHead(), content_.substr(300, length));
    EXPECT_EQ(end.kind, Kind::kInterrupted) << length;
    EXPECT_EQ(end.failure, TransferFailure::kDropped);
    EXPECT_EQ(bytes().size(), kThere);
  }
}

TEST_F(AttemptTest, AShorterRangeThanAskedForIsContinued) {
  leave(kThere);
  const AttemptEnd end =
      take({"HTTP/1.1 206 OK", "Content-Range: bytes 300-499/1000", ""}, content_.substr(300, 200));
  EXPECT_EQ(end.kind, Kind::kContinue);
  EXPECT_EQ(bytes(), content_.substr(0, 500));
}

TEST_F(AttemptTest, WhatCameBeforeAnInterruptionIsKept) {
  leave(kThere);
  const AttemptEnd end = take(restHead(), content_.substr(300, 250), 3, TransferFailure::kStalled);
  EXPECT_EQ(end.kind, Kind::kInterrupted);
  EXPECT_EQ(end.failure, TransferFailure::kStalled);
  EXPECT_EQ(bytes(), content_.substr(0, 550));
}

TEST_F(AttemptTest, AnUncleanEndBehindTheLastByteIsNoInterruption) {
  leave(kThere);
  EXPECT_EQ(take(restHead(), content_.substr(300), 64, TransferFailure::kDropped).kind,
            Kind::kComplete);
}

TEST_F(AttemptTest, MoreThanTheWholeFileIsNotTaken) {
  leave(kThere);
  EXPECT_EQ(take(restHead(), content_.substr(300) + "x", 1).kind, Kind::kAskForWhole);
}

TEST_F(AttemptTest, AFileOfUnknownLengthEndsProperlyOrNotAtAll) {
  EXPECT_EQ(take({"HTTP/1.1 200 OK", ""}, content_, 10, TransferFailure::kDropped).kind,
            Kind::kInterrupted);
  part_->file().cut(0);
  EXPECT_EQ(take({"HTTP/1.1 200 OK", ""}, content_, 10).kind, Kind::kComplete);
  EXPECT_EQ(part_->state().total, kAttemptSize);
}

TEST_F(AttemptTest, AnAnswerWithoutBodyIsJudgedToo) {
  EXPECT_EQ(take({"HTTP/1.1 404 No", ""}, "").failure, failureOfStatus(404));
  EXPECT_EQ(take({"HTTP/1.1 200 OK", "Content-Length: 0", ""}, "").kind, Kind::kComplete);
}

TEST_F(AttemptTest, NoAnswerAtAllIsWhatTheTransportSays) {
  const AttemptEnd end = take({}, "", 1, TransferFailure::kRefused);
  EXPECT_EQ(end.kind, Kind::kInterrupted);
  EXPECT_EQ(end.failure, TransferFailure::kRefused);
}

TEST_F(AttemptTest, ARedirectThatFailedIsNotTakenForTheAnswer) {
  const AttemptEnd end = take({"HTTP/1.1 302 Found", ""}, "", 1, TransferFailure::kRedirectLoop);
  EXPECT_EQ(end.failure, TransferFailure::kRedirectLoop);
}

TEST_F(AttemptTest, ABusyServerSaysWhenToComeAgain) {
  const AttemptEnd end = take({"HTTP/1.1 503 Busy", "Retry-After: 7", ""}, "busy");
  EXPECT_EQ(end.kind, Kind::kTryLater);
  EXPECT_EQ(end.retryAfter, std::chrono::seconds(7));
}

// Whatever a server says: what counts as complete is one version, byte for byte.
TEST_F(AttemptTest, MutatedAnswersNeverStitchTwoVersionsTogether) {
  std::mt19937 random(7);
  const auto below = [&](std::size_t bound) { return random() % bound; };
  const std::string other = filmBytes(kAttemptSize, 2);
  int completions = 0;
  for (int round = 0; round < 600; ++round) {
    leave(1 + below(kAttemptSize - 1));
    const RangeRequest request = planRequest(part_->facts(), kOverlap);
    const bool isOther = below(2) == 1;
    const std::string& version = isOther ? other : content_;
    const std::size_t start = below(4) == 0 ? below(kAttemptSize) : request.start;
    const std::size_t total = below(6) == 0 ? below(kAttemptSize * 2) : kAttemptSize;
    std::string range = "Content-Range: bytes " + std::to_string(start) + "-999/" +
                        (below(5) == 0 ? std::string("*") : std::to_string(total));
    if (below(8) == 0) range[below(range.size())] = static_cast<char>('0' + below(10));
    const char* const statuses[] = {"206", "206", "206", "200", "416", "503", "404"};
    const std::string tag = below(3) == 0 ? "" : isOther ? "ETag: \"b\"" : "ETag: \"a\"";
    const std::string status = statuses[below(7)];
    const std::string body = status == "200" ? version : version.substr(start);
    const AttemptEnd end = take(
        {"HTTP/1.1 " + status + " X", range, tag, "Content-Length: " + std::to_string(body.size())},
        body, 1 + below(300));
    if (end.kind != Kind::kComplete) continue;
    ++completions;
    EXPECT_TRUE(bytes() == content_ || bytes() == other) << range;
  }
  EXPECT_GT(completions, 50);
}

}  // namespace
}  // namespace playerx::transfers
