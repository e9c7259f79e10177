#include <gmock/gmock.h>

#include <csignal>

#include "tests/system/ServedQueue.h"

namespace system_test {
namespace {

using support::Process;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

/// The same command, given once more.
class AgainTest : public ServedQueueTest {
 protected:
  void expectOneFilm() {
    EXPECT_THAT(home.films(), ElementsAre("a.avi"));
    EXPECT_THAT(home.queue(), SizeIs(1));
  }
};

TEST_F(AgainTest, AFilmThatIsThereIsNotFetchedAgain) {
  const std::string url = offerQuick("a.avi");
  EXPECT_EQ(home.run({"get", url}).status, 0);
  const PlayerResult again = home.run({"get", url});
  EXPECT_EQ(again.status, 0);
  EXPECT_THAT(again.errors, HasSubstr("already there"));
  EXPECT_THAT(again.output, AllOf(HasSubstr("\"event\":\"finished\""),
                                  HasSubstr((home.media() / "a.avi").string())));
  expectOneFilm();
}

TEST_F(AgainTest, AFilmThatIsGoneIsFetchedAnew) {
  const std::string url = offerQuick("a.avi");
  EXPECT_EQ(home.run({"get", url}).status, 0);
  std::filesystem::remove(home.media() / "a.avi");
  EXPECT_EQ(home.run({"get", url}).status, 0);
  expectOneFilm();
}

TEST_F(AgainTest, AFilmThatFailedIsRetried) {
  EXPECT_EQ(home.run({"get", quick.url("/a.avi")}).status, 1);
  EXPECT_EQ(home.run({"get", offerQuick("a.avi")}).status, 0);
  expectOneFilm();
}

TEST_F(AgainTest, AFilmIsFetchedAgainOnDemand) {
  const std::string url = offerQuick("a.avi");
  EXPECT_EQ(home.run({"get", url}).status, 0);
  EXPECT_EQ(home.run({"get", "--again", url}).status, 0);
  EXPECT_THAT(home.films(), SizeIs(2));
}

TEST_F(AgainTest, OnlyAFilmThatIsFetchedAnewLosesItsOptions) {
  const std::string url = offerQuick("a.avi");
  EXPECT_EQ(home.run({"add", "--referer", "http://h/", url}).status, 0);
  EXPECT_EQ(home.run({"add", "--again", url}).status, 0);
  EXPECT_THAT(support::readFile(home.data() / "film-options.jsonl"), HasSubstr("http://h/"));
}

TEST_F(AgainTest, TheFilmsOfATicketAreNotFetchedTwice) {
  const support::TempDir folder;
  const std::string ticket =
      folder.write("two.tix", "TixVeskVersion=1.0\nstart\nurl=" + offerQuick("a.avi") +
                                  "\nend\nstart\nurl=" + offerQuick("b.avi") + "\nend\n");
  EXPECT_EQ(home.run({"add", offerQuick("b.avi")}).status, 0);
  EXPECT_EQ(home.run({"get", ticket}).status, 0);
  const PlayerResult again = home.run({"get", ticket});
  EXPECT_EQ(again.status, 0);
  EXPECT_THAT(again.errors, HasSubstr("b.avi is already there"));
  EXPECT_THAT(home.films(), ElementsAre("a.avi", "b.avi"));
  EXPECT_THAT(home.queue(), SizeIs(2));
  std::filesystem::remove(home.media() / "a.avi");
  EXPECT_EQ(home.run({"get", ticket}).status, 0);
  EXPECT_THAT(home.films(), ElementsAre("a.avi", "b.avi"));
  EXPECT_THAT(home.queue(), SizeIs(2));
}

TEST_F(AgainTest, AFilmThatATicketNamesTwiceIsFetchedOnce) {
  const support::TempDir folder;
  const std::string film = "start\nurl=" + offerQuick("a.avi") + "\nend\n";
  const std::string ticket = folder.write("two.tix", "TixVeskVersion=1.0\n" + film + film);
  EXPECT_EQ(home.run({"get", ticket}).status, 0);
  EXPECT_THAT(home.films(), ElementsAre("a.avi"));
  EXPECT_THAT(home.queue(), SizeIs(1));
  EXPECT_EQ(home.run({"get", "--again", ticket}).status, 0);
  EXPECT_THAT(home.films(), SizeIs(2)) << "the film was fetched once more";
}

TEST_F(AgainTest, OneFilmThatFailedIsRetriedAlone) {
  const std::string first = quick.url("/first.avi");
  const std::string second = quick.url("/second.avi");
  EXPECT_EQ(home.run({"get", first, second}).status, 1);
  EXPECT_EQ(home.queue().at(0).at("url"), first);
  quick.serve("second.avi", distinctBytes(5000));
  EXPECT_EQ(home.run({"get", second}).status, 0);
  EXPECT_EQ(home.queue().at(0).at("status"), "failed") << "the other one";
  EXPECT_EQ(home.run({"move", "1", "top"}).status, 1);
  EXPECT_EQ(home.queue().at(0).at("status"), "failed");
}

TEST_F(AgainTest, AFilmHasTheNameThatItWasGiven) {
  EXPECT_EQ(home.run({"get", "-o", "holiday.avi", offerQuick("a.avi")}).status, 0);
  EXPECT_THAT(home.films(), ElementsAre("holiday.avi"));
}

TEST_F(AgainTest, AListNamesTheFilms) {
  const support::TempDir folder;
  const std::string list =
      folder.write("list", "# two\n\n" + offerQuick("a.avi") + "\n" + offerQuick("b.avi") + "\n");
  EXPECT_EQ(home.run({"get", "-i", list}).status, 0);
  EXPECT_THAT(home.films(), ElementsAre("a.avi", "b.avi"));
}

/// Killed at instants that are spread over the time from the start to the end of a download.
TEST_F(AgainTest, AfterAKillAtAnyInstantThereIsOneFilm) {
  constexpr int kKills = 40;
  for (int i = 0; i < kKills; ++i) {
    const PlayerHome fresh;
    const std::string url = offerQuick("a.avi");
    Process player(fresh.startOptions({"get", url}));
    player.wait(std::chrono::milliseconds(10 * i));
    player.send(SIGKILL);
    player.wait();
    const PlayerResult again = fresh.run({"get", url});
    EXPECT_EQ(again.status, 0) << again.output << again.errors;
    EXPECT_THAT(fresh.films(), ElementsAre("a.avi")) << "killed after " << 10 * i << " ms";
    EXPECT_THAT(fresh.queue(), SizeIs(1));
    EXPECT_THAT(fresh.partials(), IsEmpty());
    EXPECT_TRUE(sameContent(quick.root() / "a.avi", fresh.media() / "a.avi"));
  }
}

}  // namespace
}  // namespace system_test
