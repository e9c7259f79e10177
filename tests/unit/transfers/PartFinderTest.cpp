#include <gtest/gtest.h>

#include "tests/unit/transfers/PartialFixture.h"

namespace playerx::transfers {
namespace {

namespace fs = std::filesystem;

class PartFinderTest : public PartialFixture {
 protected:
  std::uint64_t bytesFor(const DownloadRequest& request) const {
    return openPart(request).part->facts().size;
  }
};

TEST_F(PartFinderTest, APartialIsFoundAgainAsItWasLeft) {
  partOf(request(), 400);
  const Opened opened = openPart(request());
  ASSERT_TRUE(opened.part);
  EXPECT_FALSE(opened.part->isWhole());
  EXPECT_EQ(opened.part->facts().size, 400u);
  EXPECT_EQ(opened.part->facts().total, 1000u);
  EXPECT_EQ(opened.part->facts().validator.etag, "\"a\"");
}

TEST_F(PartFinderTest, APartialThatStopsBeforeItsStateWasSavedIsFoundToo) {
  freshPartOf(request(), 400);
  EXPECT_EQ(bytesFor(request()), 400u);
}

TEST_F(PartFinderTest, BytesWithoutAStateAreNotBelieved) {
  partOf(request(), 400);
  fs::remove(stateFile());
  EXPECT_EQ(bytesFor(request()), 0u);
}

TEST_F(PartFinderTest, AStateOfAnotherVersionIsReplacedBeforeNewBytesCome) {
  partOf(request(), 400);
  const auto part = openPart(request()).part;
  EXPECT_EQ(part->beginVersion({"\"b\"", "", false}, 1000), 0);
  EXPECT_EQ(loadState(part->paths().state())->validator.etag, "\"b\"");
}

TEST_F(PartFinderTest, APartialInUseIsLeftAlone) {
  const auto first = partOf(request(), 400);
  const Opened second = openPart(request());
  ASSERT_TRUE(second.part);
  EXPECT_NE(second.part->paths().key, first->paths().key);
  EXPECT_EQ(second.part->facts().size, 0u);
  const Opened third = openPart(request());
  EXPECT_NE(third.part->paths().key, second.part->paths().key);
}

TEST_F(PartFinderTest, TheExactAddressGoesBeforeTheSamePlace) {
  partOf(request("film.avi", "http://h/film.avi?token=1"), 100);
  EXPECT_EQ(bytesFor(request("film.avi", "http://h/film.avi?token=2")), 0u) << "not managed";
  EXPECT_EQ(bytesFor(managed("1")), 100u);
  EXPECT_EQ(bytesFor(managed("3")), 100u);
}

TEST_F(PartFinderTest, APartialOfAnotherAddressIsNotTouched) {
  partOf(request("film.avi", "http://h/film.avi?token=1"), 100);
  const auto before = fs::last_write_time(stateFile());
  const auto other = openPart(request("film.avi", "http://h/film.avi?token=2"));
  EXPECT_EQ(fs::last_write_time(stateFile()), before);
  EXPECT_EQ(other.part->facts().size, 0u);
}

TEST_F(PartFinderTest, APartialThatWasContinuedBelongsToTheNewAddress) {
  partOf(managed("1"), 100);
  openPart(managed("2"));
  EXPECT_EQ(bytesFor(request("film.avi", "http://h/film.avi?token=2")), 100u);
}

TEST_F(PartFinderTest, APartialWithoutBytesLeavesNothingBehind) {
  openPart(request());
  EXPECT_TRUE(hasNoPartials());
}

TEST_F(PartFinderTest, AfterAPowerCutOnlyWhatWasOnTheDiskIsBelieved) {
  auto part = partOf(request(), 400);
  EXPECT_EQ(part->makeDurable(part->mark()), 0);
  part->file().append(filmBytes(200).data(), 200);
  part->file().flush();
  const PartState kept = *loadState(stateFile());
  part.reset();
  ASSERT_EQ(storeState(stateFile(), kept), 0);
  changeState([](PartState& state) { state.boot = "an earlier one"; });
  EXPECT_EQ(bytesFor(request()), 400u);
}

TEST_F(PartFinderTest, ASyncOfAnEarlierVersionMakesNothingDurable) {
  auto part = partOf(request(), 400);
  const Part::Mark mark = part->mark();
  part->beginVersion({"\"b\"", "", false}, 1000);
  EXPECT_EQ(part->makeDurable(mark), 0);
  EXPECT_EQ(part->state().durable, 0u);
}

TEST_F(PartFinderTest, APartialLargerThanItsTotalIsNotBelieved) {
  partOf(request(), 400);
  changeState([](PartState& state) { state.total = 300; });
  EXPECT_EQ(bytesFor(request()), 0u);
}

TEST_F(PartFinderTest, BytesWithoutAnAcceptedAnswerAreNotBelieved) {
  partOf(request(), 400);
  changeState([](PartState& state) { state.answered = false; });
  EXPECT_EQ(bytesFor(request()), 0u);
}

TEST_F(PartFinderTest, AFolderOrALinkInThePlaceOfThePartialIsPassedOver) {
  const fs::path bytes = folder_ / "parts" / (digestOf("http://h/film.avi") + ".part");
  fs::create_directories(bytes);
  EXPECT_TRUE(openPart(request()).part);
  fs::remove(bytes);
  folder_.write("victim", "precious");
  fs::create_symlink(folder_ / "victim", bytes);
  EXPECT_TRUE(openPart(request()).part);
  EXPECT_EQ(support::readFile(folder_ / "victim"), "precious");
}

TEST_F(PartFinderTest, ABackupByHardLinksStaysAsItIs) {
  partOf(request(), 400);
  const fs::path bytes = stateFile().replace_extension(".part");
  fs::create_hard_link(bytes, folder_ / "backup");
  const std::unique_ptr<Part> part = openPart(request()).part;
  ASSERT_TRUE(part);
  EXPECT_EQ(part->file().size(), 400u) << "and the film goes on";
  EXPECT_EQ(part->file().append("more", 4), 0);
  EXPECT_EQ(part->file().flush(), 0);
  EXPECT_EQ(support::readFile(folder_ / "backup"), filmBytes(kFilmSize).substr(0, 400));
  EXPECT_EQ(support::readFile(bytes), filmBytes(kFilmSize).substr(0, 400) + "more");
}

TEST_F(PartFinderTest, AWholeFilmThatHasAnotherNameIsFoundByItsMark) {
  partOf(request(), kFilmSize)->finish();
  for (const auto& entry : fs::directory_iterator(folder_ / "parts")) {
    fs::create_hard_link(entry.path(), folder_ / "backup");
  }
  EXPECT_TRUE(openPart(request()).part->isWhole());
}

TEST_F(PartFinderTest, WhatArrivesIsForItsOwnerAlone) {
  partOf(request(), 400);
  for (const auto& entry : fs::directory_iterator(folder_ / "parts")) {
    EXPECT_EQ(entry.status().permissions(), fs::perms::owner_read | fs::perms::owner_write)
        << entry.path();
  }
}

TEST_F(PartFinderTest, AWholePartialIsPlacedWithoutFurtherQuestions) {
  partOf(request(), 1000)->finish();
  EXPECT_EQ(stateFile(), "") << "the mark says it all";
  const Opened opened = openPart(request());
  ASSERT_TRUE(opened.part);
  EXPECT_TRUE(opened.part->isWhole());
  EXPECT_EQ(place(*opened.part, request()).film, movie("film.avi"));
  EXPECT_EQ(support::readFile(movie("film.avi")), filmBytes(1000));
}

TEST_F(PartFinderTest, AWholePartialOfAnotherFilmIsLeftAlone) {
  partOf(request("film.avi", "http://h/film.avi?token=1"), 1000)->finish();
  const Opened opened = openPart(request("film.avi", "http://h/film.avi?token=2"));
  EXPECT_FALSE(opened.part->isWhole());
  EXPECT_EQ(opened.part->facts().size, 0u);
}

TEST_F(PartFinderTest, AWholeFilmThatAPowerCutMayHaveTornIsFetchedAgain) {
  const auto part = freshPartOf(request(), 1000);
  part->finish();
  const FilmMark mark = *readMark(part->paths().bytes());
  EXPECT_EQ(mark.boot, currentBoot());
  FilmMark earlier = mark;
  earlier.boot = digestOf("an earlier one");
  ASSERT_EQ(writeMark(part->file().descriptor(), earlier), 0);
  EXPECT_FALSE(isWhole(earlier, part->paths().bytes()));
}

TEST_F(PartFinderTest, AFilmThatTookLongIsOnTheDiskBeforeItIsMarked) {
  const auto part = partOf(request(), 1000);
  part->finish();
  EXPECT_EQ(readMark(part->paths().bytes())->boot, "");
}

TEST_F(PartFinderTest, APlacedFilmIsFoundUnderTheNameThatWasTakenByIt) {
  place(*partOf(request(), 1000), request());
  EXPECT_EQ(openPart(request()).film, movie("film.avi"));
  EXPECT_EQ(openPart(request("film[2].avi")).film, movie("film.avi"));
  EXPECT_EQ(openPart(request("other.avi")).film, "");
  EXPECT_EQ(openPart(request("film.avi", "http://h/other.avi")).film, "");
}

TEST_F(PartFinderTest, AWholePartialBesideItsPlacedFilmIsDeleted) {
  place(*partOf(request(), 1000), request());
  partOf(request("other.avi"), 1000)->finish();
  ASSERT_FALSE(fs::is_empty(request().downloads));
  EXPECT_EQ(openPart(request()).film, movie("film.avi"));
  EXPECT_TRUE(fs::is_empty(request().downloads));
}

TEST_F(PartFinderTest, AStrangersFileIsNotTakenForTheFilm) {
  folder_.write("movies/film.avi", filmBytes(1000));
  EXPECT_EQ(openPart(request("film[2].avi")).film, "");
}

TEST_F(PartFinderTest, AFilmThatWasChangedSinceIsNotTakenForIt) {
  place(*partOf(request(), 1000), request());
  fs::resize_file(movie("film.avi"), 999);
  EXPECT_EQ(openPart(request("film[2].avi")).film, "");
}

TEST_F(PartFinderTest, AFilmWithoutItsMarkIsNobodys) {
  place(*partOf(request(), 1000), request());
  removeMark(movie("film.avi"));
  EXPECT_EQ(openPart(request("film[2].avi")).film, "");
}

}  // namespace
}  // namespace playerx::transfers
