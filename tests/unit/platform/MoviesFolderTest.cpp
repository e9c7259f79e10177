#include <gtest/gtest.h>

#include "kvpm/PathTools.h"
#include "playerx/platform/MoviesFolder.h"

namespace {

using kvpm::PathTools;

class MoviesFolder : public testing::Test {
 protected:
  ~MoviesFolder() override { playerx::setMoviesFolder(L""); }
};

TEST_F(MoviesFolder, IsTheDefaultUntilOneIsSet) {
  EXPECT_EQ(PathTools::getVeskMoviesFolder(), playerx::defaultMoviesFolder());
}

TEST_F(MoviesFolder, TheDefaultIsAbsoluteAndEndsInTheNameOfThePlayer) {
  const std::wstring folder = playerx::defaultMoviesFolder();
  EXPECT_EQ(folder.front(), L'/');
  EXPECT_TRUE(folder.ends_with(L"/Vesk"));
}

TEST_F(MoviesFolder, IsTheOneThatThePlayerSets) {
  playerx::setMoviesFolder(L"/media/\x1F3AC");
  EXPECT_EQ(PathTools::getVeskMoviesFolder(), L"/media/\x1F3AC");
}

TEST_F(MoviesFolder, HasNoSeparatorAtItsEnd) {
  playerx::setMoviesFolder(L"/media/films//");
  EXPECT_EQ(PathTools::getVeskMoviesFolder(), L"/media/films");
}

TEST_F(MoviesFolder, AnEmptyOneRestoresTheDefault) {
  playerx::setMoviesFolder(L"/media");
  playerx::setMoviesFolder(L"");
  EXPECT_EQ(PathTools::getVeskMoviesFolder(), playerx::defaultMoviesFolder());
}

}  // namespace
