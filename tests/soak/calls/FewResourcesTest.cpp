#include <gmock/gmock.h>

#include <cerrno>
#include <string>
#include <vector>

#include "tests/soak/calls/FailingPlayer.h"
#include "tests/support/Nginx.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"

namespace soak {
namespace {

using system_test::PlayerHome;
using system_test::PlayerResult;
using testing::HasSubstr;

/// A player that may open only so many files, or start only so many threads.
class FewResources : public testing::Test {
 protected:
  FewResources() {
    system_test::writeDistinctFile(server_.root() / "film.avi", 300'000);
    url_ = server_.url("/film.avi");
  }

  PlayerResult getWithFiles(int most, const PlayerHome& home) const {
    support::ProcessOptions options = home.startOptions({"get", url_});
    const std::string limited = "ulimit -n " + std::to_string(most) + "; exec \"$0\" \"$@\"";
    options.arguments.insert(options.arguments.begin(), {"sh", "-c", limited});
    support::Process player(options);
    return system_test::finish(player);
  }

  void expectFilm(const PlayerHome& home) const {
    EXPECT_TRUE(system_test::sameContent(server_.root() / "film.avi", home.media() / "film.avi"));
  }

  const support::Nginx server_;
  std::string url_;
};

TEST_F(FewResources, TooFewFilesAreSaidAtOnce) {
  for (const int most : {9, 10, 12, 14, 16, 18, 31}) {
    const PlayerHome home;
    const PlayerResult result = getWithFiles(most, home);
    EXPECT_EQ(result.status, 1) << most;
    EXPECT_THAT(result.errors, HasSubstr("Only " + std::to_string(most) + " files")) << most;
    EXPECT_THAT(home.films(), testing::IsEmpty()) << most;
  }
}

TEST_F(FewResources, TheFewestFilesThatAreAskedForAreEnough) {
  const PlayerHome home;
  const PlayerResult result = getWithFiles(32, home);
  EXPECT_EQ(result.status, 0) << result.output << result.errors;
  expectFilm(home);
}

// Whichever thread it is: either all goes well without it, or the user is told.
TEST_F(FewResources, AThreadThatCannotBeStartedIsNeverWaitedFor) {
  const PlayerHome whole;
  const int threads = runFailing(whole, {"get", url_}).calls["pthread_create"];
  ASSERT_GT(threads, 12);
  for (int first = 1; first <= threads; ++first) {
    SCOPED_TRACE("from thread " + std::to_string(first) + " of " + std::to_string(threads));
    const PlayerHome home;
    const PlayerResult result =
        runFailing(home, {"get", url_}, {"pthread_create", EAGAIN, first, kForEver}).result;
    if (result.status == 0) {
      expectFilm(home);
    } else {
      EXPECT_EQ(result.status, 1);
      EXPECT_FALSE(result.errors.empty() && result.events("failed").empty()) << result.output;
    }
  }
}

TEST_F(FewResources, NoTicketIsCalledEmptyForLackOfAThread) {
  const support::TempDir folder;
  const std::string ticket =
      folder.write("film.tix", "TixVeskVersion=1.0\nstart\nurl=" + url_ + "\nend\n");
  const PlayerHome whole;
  const int threads = runFailing(whole, {"add", ticket}).calls["pthread_create"];
  for (int which = 1; which <= threads; ++which) {
    const PlayerHome home;
    const PlayerResult result =
        runFailing(home, {"add", ticket}, {"pthread_create", EAGAIN, which}).result;
    EXPECT_TRUE(result.status == 0 || !result.errors.empty()) << which << result.output;
    EXPECT_THAT(result.output, testing::Not(HasSubstr("empty_ticket"))) << which;
  }
}

}  // namespace
}  // namespace soak
