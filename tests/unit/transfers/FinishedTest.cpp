#include <gtest/gtest.h>

#include "tests/support/Process.h"
#include "tests/unit/transfers/DownloadsFixture.h"

namespace playerx::transfers {
namespace {

using support::Process;

constexpr std::size_t kFinishedSize = 100'000;

/// How a film is found again whose completion was lost with its process.
class FinishedTest : public DownloadsFixture {
 protected:
  FinishedTest() : server_(filmOf(kFinishedSize)) {}

  /// A process of its own fetches the film and is killed before the session is released.
  void fetchAndDie(const std::string& url, const std::string& name = "film.avi") {
    Process process({VESK_FETCH_PROGRAM, "--keep", parts(), movies(), url, name});
    ASSERT_TRUE(process.waitForOutput("complete"));
    process.send(SIGKILL);
    process.wait();
  }

  KPB::DownloadInfo managed(const std::string& name, const std::string& rights) const {
    KPB::DownloadInfo result = info(name);
    result.setSTRDChunk(reinterpret_cast<const unsigned char*>(rights.data()), rights.size());
    return result;
  }

  FilmServer server_;
};

TEST_F(FinishedTest, AFilmWhoseCompletionWasLostIsMovedAndNotFetchedAgain) {
  fetchAndDie(server_.url());
  EXPECT_EQ(fetch(server_.url(), "film[2].avi").events,
            (std::vector<std::string>{"began", "percent 100", "complete"}));
  EXPECT_EQ(server_.requestCount(), 1u);
  EXPECT_EQ(filesIn(movies()), std::vector<std::string>{"film[2].avi"});
  EXPECT_EQ(film("film[2].avi"), filmBytes(kFinishedSize));
}

TEST_F(FinishedTest, DyingAgainAndAgainChangesNothing) {
  fetchAndDie(server_.url());
  fetchAndDie(server_.url(), "film[2].avi");
  fetchAndDie(server_.url(), "film[2][2].avi");
  EXPECT_TRUE(fetch(server_.url(), "film[2][2][2].avi").complete);
  EXPECT_EQ(server_.requestCount(), 1u);
  EXPECT_EQ(filesIn(movies()), std::vector<std::string>{"film[2][2][2].avi"});
}

TEST_F(FinishedTest, TheSameNameFindsTheFilmInItsPlace) {
  fetchAndDie(server_.url());
  EXPECT_TRUE(fetch(server_.url()).complete);
  EXPECT_EQ(server_.requestCount(), 1u);
  EXPECT_EQ(filesIn(movies()), std::vector<std::string>{"film.avi"});
}

TEST_F(FinishedTest, ANameOfAnotherFormIsAFreshRequest) {
  fetchAndDie(server_.url());
  for (const char* name : {"film[1].avi", "other.avi", "film[2].mkv"}) {
    EXPECT_TRUE(fetch(server_.url(), name).complete);
    EXPECT_EQ(film(name), filmBytes(kFinishedSize));
  }
  EXPECT_EQ(server_.requestCount(), 4u);
  EXPECT_EQ(film("film.avi"), filmBytes(kFinishedSize));
}

TEST_F(FinishedTest, AFilmThatGotAnotherNameIsFoundByTheOneThatWasAskedFor) {
  folder_.write("movies/film.avi", "mine");
  fetchAndDie(server_.url());
  ASSERT_EQ(film("film[2].avi"), filmBytes(kFinishedSize));
  EXPECT_TRUE(fetch(server_.url(), "film[3].avi").complete);
  EXPECT_EQ(server_.requestCount(), 1u);
  EXPECT_EQ(filesIn(movies()), (std::vector<std::string>{"film.avi", "film[3].avi"}));
}

TEST_F(FinishedTest, AFilmThatWasDeletedOrChangedIsFetchedAgain) {
  fetchAndDie(server_.url());
  std::filesystem::remove(movies() / "film.avi");
  fetchAndDie(server_.url(), "film[2].avi");
  EXPECT_EQ(server_.requestCount(), 2u);
  support::writeFile(movies() / "film[2].avi", "short");
  EXPECT_TRUE(fetch(server_.url(), "film[2][2].avi").complete);
  EXPECT_EQ(server_.requestCount(), 3u);
  EXPECT_EQ(film("film[2].avi"), "short");
  EXPECT_EQ(film("film[2][2].avi"), filmBytes(kFinishedSize));
}

TEST_F(FinishedTest, ATakenNameIsNotOverwrittenByTheMove) {
  fetchAndDie(server_.url());
  folder_.write("movies/film[2].avi", "mine");
  EXPECT_TRUE(fetch(server_.url(), "film[2].avi").complete);
  EXPECT_EQ(server_.requestCount(), 1u);
  EXPECT_EQ(film("film[2].avi"), "mine");
  EXPECT_EQ(film("film[2][2].avi"), filmBytes(kFinishedSize));
  EXPECT_EQ(filesIn(movies()).size(), 2u);
}

TEST_F(FinishedTest, ARightsManagedFilmIsFoundUnderItsNextAuthorisation) {
  downloads_->setCallback(nullptr);
  const auto uid = start(server_.url("/f?token=1"), managed("film.avi", "old rights"));
  ASSERT_TRUE(support::waitFor([&] { return report(uid).phase == TransferPhase::kComplete; }));
  EXPECT_EQ(film("film.avi.rights"), "old rights");
  restart();
  EXPECT_TRUE(fetch(server_.url("/f?token=2"), managed("film[2].avi", "new rights")).complete);
  EXPECT_EQ(server_.requestCount(), 1u);
  EXPECT_EQ(filesIn(movies()), (std::vector<std::string>{"film[2].avi", "film[2].avi.rights"}));
  EXPECT_EQ(film("film[2].avi.rights"), "new rights");
}

TEST_F(FinishedTest, ARightsManagedFilmThatIsRequestedOnceMoreIsFetched) {
  EXPECT_TRUE(fetch(server_.url("/f?token=1"), managed("film.avi", "1")).complete);
  EXPECT_TRUE(fetch(server_.url("/f?token=2"), managed("film[2].avi", "2")).complete);
  EXPECT_EQ(server_.requestCount(), 2u);
  EXPECT_EQ(film("film.avi.rights"), "1");
  EXPECT_EQ(film("film[2].avi.rights"), "2");
}

TEST_F(FinishedTest, APlainFilmIsNotFoundByItsPlaceAlone) {
  fetchAndDie(server_.url("/film.avi?id=1"));
  EXPECT_TRUE(fetch(server_.url("/film.avi?id=2"), "film[2].avi").complete);
  EXPECT_EQ(server_.requestCount(), 2u);
  EXPECT_EQ(filesIn(movies()), (std::vector<std::string>{"film.avi", "film[2].avi"}));
}

TEST_F(FinishedTest, AFilmThatTheQueueDoesNotCallCompleteIsFoundAgain) {
  for (const char* const name : {"film.avi", "film[2].avi", "film[3].avi"}) {
    Tuning tuning = shortTimes();
    tuning.forgetAfter = Milliseconds(1);
    restart(tuning);
    EXPECT_TRUE(receiver_.waitForEnd(start(server_.url(), name)));
    // Another one, so that what is to be forgotten of the first is.
    EXPECT_TRUE(fetch(server_.url("/other.avi"), "other.avi").complete);
    EXPECT_TRUE(support::waitFor([&] { return !readMark(movies() / "other.avi"); }));
    std::filesystem::remove(movies() / "other.avi");
    EXPECT_EQ(filesIn(movies()), std::vector<std::string>{name});
  }
  EXPECT_EQ(server_.requestCount(), 4u) << "once for it, three times for the other";
}

TEST_F(FinishedTest, AFilmThatIsConfirmedLateIsForgottenToo) {
  Tuning tuning = shortTimes();
  tuning.forgetAfter = Milliseconds(1);
  restart(tuning);
  EXPECT_TRUE(receiver_.waitForEnd(start(server_.url())));
  EXPECT_TRUE(fetch(server_.url("/other.avi"), "other.avi").complete);
  EXPECT_TRUE(support::waitFor([&] { return !readMark(movies() / "other.avi"); }));
  EXPECT_TRUE(readMark(movies() / "film.avi"));
  downloads_->confirm(server_.url());
  EXPECT_TRUE(support::waitFor([&] { return !readMark(movies() / "film.avi"); }));
}

TEST_F(FinishedTest, WhereNothingIsConfirmedAFilmIsForgottenAMomentAfterItsReport) {
  Tuning tuning = shortTimes();
  tuning.forgetAfter = Milliseconds(1);
  downloads_ = std::make_unique<Downloads>(tuning);
  downloads_->setCallback(&receiver_);
  EXPECT_TRUE(receiver_.waitForEnd(start(server_.url())));
  EXPECT_TRUE(support::waitFor([&] { return !readMark(movies() / "film.avi"); }));
}

TEST_F(FinishedTest, ACompletionIsForgottenAMomentAfterItsReport) {
  Tuning tuning = shortTimes();
  tuning.forgetAfter = Milliseconds(1);
  restart(tuning);
  ASSERT_TRUE(fetch(server_.url()).complete);
  ASSERT_TRUE(support::waitFor([&] { return !readMark(movies() / "film.avi"); }));
  EXPECT_TRUE(fetch(server_.url(), "film[2].avi").complete);
  EXPECT_EQ(server_.requestCount(), 2u);
  EXPECT_EQ(film("film.avi"), filmBytes(kFinishedSize));
  EXPECT_EQ(film("film[2].avi"), filmBytes(kFinishedSize));
}

TEST_F(FinishedTest, ACompletionThatWasNeverReportedHoldsUpNoOther) {
  Tuning tuning = shortTimes();
  tuning.forgetAfter = Milliseconds(1);
  restart(tuning);
  downloads_->setCallback(nullptr);
  const auto uid = start(server_.url());
  ASSERT_TRUE(support::waitFor([&] { return report(uid).phase == TransferPhase::kComplete; }));
  downloads_->stopSession(uid);
  downloads_->setCallback(&receiver_);
  ASSERT_TRUE(fetch(server_.url("/other.avi"), "other.avi").complete);
  EXPECT_TRUE(support::waitFor([&] { return !readMark(movies() / "other.avi"); }));
  EXPECT_TRUE(readMark(movies() / "film.avi"));
}

TEST_F(FinishedTest, NothingStaysWhereFilmsArriveWhenTheProcessDies) {
  fetchAndDie(server_.url());
  EXPECT_EQ(filesIn(parts()), std::vector<std::string>{});
}

TEST_F(FinishedTest, AFilmThatIsTakenBackKeepsItsNameAndIsNotFetchedAgain) {
  fetchAndDie(server_.url());
  EXPECT_TRUE(downloads_->takeBack(movies() / "film.avi", parts()));
  EXPECT_TRUE(fetch(server_.url()).complete);
  EXPECT_EQ(server_.requestCount(), 1u);
  EXPECT_EQ(filesIn(movies()), std::vector<std::string>{"film.avi"});
}

TEST_F(FinishedTest, AReportedCompletionIsForgottenAtAnOrderlyEnd) {
  ASSERT_TRUE(fetch(server_.url()).complete);
  restart();
  EXPECT_TRUE(partsBecome({}));
  EXPECT_TRUE(fetch(server_.url(), "film[2].avi").complete);
  EXPECT_EQ(server_.requestCount(), 2u);
}

TEST_F(FinishedTest, AReportedCompletionIsRememberedForAMoment) {
  const auto uid = start(server_.url());
  ASSERT_TRUE(receiver_.waitForEnd(uid));
  downloads_->stopSession(uid);
  EXPECT_TRUE(fetch(server_.url(), "film[2].avi").complete);
  EXPECT_EQ(server_.requestCount(), 1u) << "the note may have been lost again";
  EXPECT_EQ(filesIn(movies()), std::vector<std::string>{"film[2].avi"});
}

TEST_F(FinishedTest, AnotherFilmDoesNotMakeTheLibraryForgetWhatWasNotReported) {
  FilmServer other(filmOf(10));
  fetchAndDie(server_.url());
  EXPECT_TRUE(fetch(other.url(), "other.avi").complete);
  restart();
  EXPECT_TRUE(fetch(server_.url(), "film[2].avi").complete);
  EXPECT_EQ(server_.requestCount(), 1u);
}

TEST_F(FinishedTest, ASessionStoppedBeforeItsCompletionWasReportedIsRemembered) {
  support::Gate inReport, goOn;
  receiver_.during([&](const std::string& event) {
    if (event != "percent 100") return;
    inReport.open();
    goOn.wait();
  });
  const auto uid = start(server_.url());
  ASSERT_TRUE(inReport.wait());
  ASSERT_TRUE(support::waitFor([&] { return report(uid).phase == TransferPhase::kComplete; }));
  downloads_->stopSession(uid);
  goOn.open();
  restart();
  EXPECT_TRUE(fetch(server_.url(), "film[2].avi").complete);
  EXPECT_EQ(server_.requestCount(), 1u);
  EXPECT_EQ(filesIn(movies()), std::vector<std::string>{"film[2].avi"});
}

TEST_F(FinishedTest, APartialOfAnotherProcessIsLeftAloneWhileThatLives) {
  server_.stallNext(kFinishedSize / 2);
  Process process({VESK_FETCH_PROGRAM, parts(), movies(), server_.url(), "film.avi"});
  ASSERT_TRUE(process.waitForOutput("percent 50"));
  ASSERT_TRUE(partsBecome({".json", ".part"})) << "what has come is worth keeping by now";
  EXPECT_TRUE(fetch(server_.url(), "mine.avi").complete);
  EXPECT_EQ(server_.header(1, "Range"), "");
  process.send(SIGKILL);
  process.wait();
  EXPECT_TRUE(fetch(server_.url(), "film.avi").complete);
  EXPECT_NE(server_.header(2, "Range"), "");
  EXPECT_EQ(film("mine.avi"), filmBytes(kFinishedSize));
  EXPECT_EQ(film("film.avi"), filmBytes(kFinishedSize));
}

TEST_F(FinishedTest, KilledInMidTransferTheFilmGoesOnWhereItWas) {
  server_.stallNext(kFinishedSize / 2);
  Process process({VESK_FETCH_PROGRAM, parts(), movies(), server_.url(), "film.avi"});
  ASSERT_TRUE(process.waitForOutput("percent 50"));
  ASSERT_TRUE(partsBecome({".json", ".part"})) << "what has come is worth keeping by now";
  process.send(SIGKILL);
  process.wait();
  EXPECT_TRUE(fetch(server_.url()).complete);
  EXPECT_EQ(server_.header(1, "Range"), "bytes=25000-");
  EXPECT_EQ(film(), filmBytes(kFinishedSize));
  restart();
  EXPECT_EQ(filesIn(parts()), std::vector<std::string>{});
}

TEST_F(FinishedTest, KilledAtAnyMomentTheFilmIsThereOnceInTheEnd) {
  for (int round = 0; round < 25; ++round) {
    Process process({VESK_FETCH_PROGRAM, "--keep", parts(), movies(), server_.url(), "film.avi"});
    // From before the first byte to after the move, wherever the machine happens to be by then.
    support::waitFor([&] { return !process.running(); }, Milliseconds(2 * round));
    process.send(SIGKILL);
    process.wait();
  }
  EXPECT_TRUE(fetch(server_.url(), "film[2].avi").complete);
  EXPECT_EQ(film("film[2].avi"), filmBytes(kFinishedSize));
  EXPECT_EQ(filesIn(movies()).size(), 1u);
  restart();
  EXPECT_EQ(filesIn(parts()), std::vector<std::string>{});
}

}  // namespace
}  // namespace playerx::transfers
