#include <gmock/gmock.h>

#include "playerx/app/session/FilmOptionsFile.h"
#include "tests/support/TempDir.h"

namespace playerx::session {
namespace {

constexpr char kFilm[] = "http://h/a.avi";

class FilmOptionsFileTest : public testing::Test {
 protected:
  std::filesystem::path file() const { return folder_ / "film-options.jsonl"; }

  /// What the next run finds.
  std::map<std::string, FilmOptions> kept() const { return FilmOptionsFile(folder_.path()).all(); }

  static model::ItemState item(const std::string& url, DownloadStatusEnumType status) {
    model::ItemState item;
    item.url = url;
    item.status = status;
    return item;
  }

  support::TempDir folder_;
  FilmOptionsFile options_{folder_.path()};
};

TEST_F(FilmOptionsFileTest, OptionsAreThereInTheNextRun) {
  const FilmOptions options{.username = "u", .password = "p", .tries = 3, .headers = {"A: b"}};
  EXPECT_EQ(options_.add(kFilm, options), options);
  EXPECT_EQ(kept().at(kFilm), options);
}

TEST_F(FilmOptionsFileTest, LaterOptionsComeToThoseThatAreThere) {
  options_.add(kFilm, {.username = "u", .password = "p", .tries = 3});
  const FilmOptions both = options_.add(kFilm, {.tries = 5, .referer = "r"});
  EXPECT_EQ(both, (FilmOptions{.username = "u", .password = "p", .tries = 5, .referer = "r"}));
}

TEST_F(FilmOptionsFileTest, AnotherUserHasNotThePasswordOfTheFirst) {
  options_.add(kFilm, {.username = "u", .password = "p"});
  EXPECT_EQ(options_.add(kFilm, {.username = "other"}).password, "");
}

TEST_F(FilmOptionsFileTest, WhatNamesTheUserLastIsTheOnlyOne) {
  options_.add(kFilm, {.username = "u", .password = "p"});
  const FilmOptions listed = options_.add(kFilm, {.netrcFile = "/n"});
  EXPECT_EQ(listed, FilmOptions{.netrcFile = "/n"});
  EXPECT_EQ(options_.add(kFilm, {.username = "v"}), FilmOptions{.username = "v"});
}

TEST_F(FilmOptionsFileTest, WhatNamesTheChecksumLastIsTheOnlyOne) {
  options_.add(kFilm, {.sha256 = "ab"});
  EXPECT_EQ(options_.add(kFilm, {.hasChecksumFile = true}), FilmOptions{.hasChecksumFile = true});
  EXPECT_TRUE(options_.add(kFilm, {.tries = 3}).hasChecksumFile);
  EXPECT_EQ(options_.add(kFilm, {.sha256 = "cd"}), (FilmOptions{.tries = 3, .sha256 = "cd"}));
}

TEST_F(FilmOptionsFileTest, EverySpellingOfAnAddressIsTheSameFilm) {
  options_.add("http://h:80/a.avi#part", {.tries = 3});
  EXPECT_EQ(kept().count(kFilm), 1u);
}

TEST_F(FilmOptionsFileTest, OnlyTheOwnerCanReadTheFile) {
  using std::filesystem::perms;
  options_.add(kFilm, {.password = "p"});
  EXPECT_EQ(std::filesystem::status(file()).permissions(), perms::owner_read | perms::owner_write);
}

TEST_F(FilmOptionsFileTest, OptionsGoWithTheirFilm) {
  options_.add(kFilm, {.tries = 3});
  options_.add("http://h/b.avi", {.tries = 3});
  options_.add("http://h/c.avi", {.tries = 3});
  const std::vector<std::string> gone = options_.prune(
      {item(kFilm, DownloadStatusFailed), item("http://h/b.avi", DownloadStatusCompleted)});
  EXPECT_THAT(gone, testing::ElementsAre("http://h/b.avi", "http://h/c.avi"));
  EXPECT_EQ(kept().size(), 1u);
  options_.prune({});
  EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(FilmOptionsFileTest, AFilmThatIsFetchedAnewBeginsWithoutOptions) {
  options_.add(kFilm, {.tries = 3});
  options_.add("http://h/b.avi", {.tries = 3});
  options_.forget("http://h/a.avi#part");
  EXPECT_THAT(kept(), testing::ElementsAre(testing::Key("http://h/b.avi")));
}

TEST_F(FilmOptionsFileTest, DamagedLinesArePassedOver) {
  for (const char* text : {"", "\xFF", "[]", "{\"address\":7}", "{\"address\":\"http://h/a.avi\"",
                           "{\"address\":\"a\",\"options\":{\"tries\":\"x\"}}"}) {
    folder_.write("film-options.jsonl", text);
    EXPECT_TRUE(kept().empty()) << text;
    FilmOptionsFile(folder_.path()).add(kFilm, {.tries = 3});
    EXPECT_EQ(kept().at(kFilm).tries, 3u) << text;
  }
}

}  // namespace
}  // namespace playerx::session
