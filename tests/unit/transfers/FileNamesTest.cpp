#include <gtest/gtest.h>

#include "playerx/transfers/FileNames.h"

namespace playerx::transfers {
namespace {

TEST(OutputNameTest, MayLeadIntoAFolder) {
  EXPECT_EQ(cleanOutputName("film.avi", ""), "film.avi");
  EXPECT_EQ(cleanOutputName("Season 1/film.avi", ""), "Season 1/film.avi");
  EXPECT_EQ(cleanOutputName("//a///./b//", ""), "a/b");
}

TEST(OutputNameTest, NeverLeadsOut) {
  for (const char* name : {"..", "../film.avi", "a/../../film.avi", "a/..", "/..", "a/../b"}) {
    EXPECT_FALSE(cleanOutputName(name, "")) << name;
  }
  EXPECT_EQ(cleanOutputName("..film.avi", ""), "..film.avi");
  EXPECT_EQ(cleanOutputName("/etc/passwd", ""), "etc/passwd");
}

TEST(OutputNameTest, IsNotEmpty) {
  for (const char* name : {"", "/", ".", "./", "//."}) EXPECT_FALSE(cleanOutputName(name, ""));
}

TEST(OutputNameTest, HoldsNoNul) { EXPECT_FALSE(cleanOutputName(std::string("a\0b", 3), "")); }

TEST(OutputNameTest, LeavesRoomForWhatComesBehind) {
  const std::string longest(255, 'x');
  EXPECT_EQ(cleanOutputName(longest, ""), longest);
  EXPECT_FALSE(cleanOutputName(longest + "x", ""));
  EXPECT_FALSE(cleanOutputName(longest, ".rights"));
  EXPECT_TRUE(cleanOutputName(longest.substr(7), ".rights"));
  EXPECT_FALSE(cleanOutputName(longest + "x/film.avi", ""));
  EXPECT_TRUE(cleanOutputName(longest + "/film.avi", ".rights"));
}

TEST(NumberedNameTest, TheNumberGoesBeforeTheExtension) {
  EXPECT_EQ(numberedName("film.avi", 2), "film[2].avi");
  EXPECT_EQ(numberedName("film", 12), "film[12]");
  EXPECT_EQ(numberedName("a.b/film", 2), "a.b/film[2]");
  EXPECT_EQ(numberedName("a/b.c.avi", 2), "a/b.c[2].avi");
  EXPECT_EQ(numberedName(".avi", 2), "[2].avi");
}

using Names = std::vector<std::string>;

TEST(NamesBeforeTest, ANumberedNameFollowsThoseThatWereTaken) {
  EXPECT_EQ(namesBefore("film.avi"), Names{"film.avi"});
  EXPECT_EQ(namesBefore("film[2].avi"), (Names{"film[2].avi", "film.avi"}));
  EXPECT_EQ(namesBefore("a/film[4]"), (Names{"a/film[4]", "a/film", "a/film[2]", "a/film[3]"}));
  EXPECT_EQ(namesBefore("film[2][3].avi"),
            (Names{"film[2][3].avi", "film[2].avi", "film[2][2].avi", "film.avi"}));
}

TEST(NamesBeforeTest, OtherBracketsArePartOfTheName) {
  for (const char* name :
       {"film[1].avi", "film[0].avi", "film[02].avi", "film[].avi", "film[2.avi", "film2].avi",
        "film[-2].avi", "film[2a].avi", "film[99999999999].avi", "[", "]", ""}) {
    EXPECT_EQ(namesBefore(name), Names{name}) << name;
  }
}

TEST(NamesBeforeTest, AHugeNumberDoesNotMeanHugeWork) {
  EXPECT_LE(namesBefore("film[4000000000].avi").size(), 100u);
}

}  // namespace
}  // namespace playerx::transfers
