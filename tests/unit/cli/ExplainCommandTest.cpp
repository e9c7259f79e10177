#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "playerx/cli/ExplainCommand.h"
#include "playerx/cli/Reporter.h"
#include "tests/support/TempDir.h"
#include "tests/support/fakes/FakeContext.h"

namespace playerx::cli {
namespace {

reasons::ProbeResult fiveBytes(const std::string& address, const std::stop_token&) {
  return {address, {}, "", 200, 5};
}

class ExplainCommandTest : public testing::Test {
 protected:
  int run(const std::vector<std::string>& tickets, bool json = false) {
    Options options;
    options.request.inputs = tickets;
    options.json = json;
    return runExplainCommand(options, plugins_, fiveBytes, out_);
  }

  support::TempDir folder_;
  const std::string good_ =
      folder_.write("a.tix", "TixVeskVersion=1.0\nstart\nurl=http://h/a.avi\nend\n");
  const std::string bad_ = folder_.write("b.tix", "TixVeskVersion=1.0\nstart\nend\n");
  support::FakeContext plugins_;
  std::ostringstream out_;
};

TEST_F(ExplainCommandTest, PeopleReadOneLinePerFilm) {
  EXPECT_EQ(run({good_}), kExitDone);
  EXPECT_EQ(out_.str(), good_ + ", line 2: a.avi from h, http://h/a.avi, 5 B, fits\n");
}

TEST_F(ExplainCommandTest, ProgramsReadOneObjectPerFilm) {
  EXPECT_EQ(run({good_}, true), kExitDone);
  EXPECT_EQ(nlohmann::json::parse(out_.str()), (nlohmann::json{{"version", kJsonVersion},
                                                               {"event", "explained"},
                                                               {"ticket", good_},
                                                               {"line", 2},
                                                               {"title", "a.avi"},
                                                               {"provider", "h"},
                                                               {"url", "http://h/a.avi"},
                                                               {"size", 5},
                                                               {"fits", true},
                                                               {"note", ""}}));
}

TEST_F(ExplainCommandTest, ATicketThatNamesNothingFailsTheCommand) {
  EXPECT_EQ(run({good_, bad_}), kExitFailed);
  EXPECT_NE(out_.str().find(bad_ + ", line 2: This film has no line \"url=\""), std::string::npos)
      << out_.str();
}

}  // namespace
}  // namespace playerx::cli
