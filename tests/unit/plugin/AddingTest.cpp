#include "playerx/platform/ThreadGate.h"
#include "tests/support/Script.h"
#include "tests/support/ScriptedServer.h"
#include "tests/unit/plugin/AddingFixture.h"

namespace {

class AddingTest : public AddingFixture {};

TEST_F(AddingTest, AnAddressBecomesTheLastItemThatWaits) {
  begin("A1 B4 C6");
  auto* const added = manager().add(L"http://films.example/dir/movie.AVI", L"", L"");
  ASSERT_NE(added, nullptr);
  EXPECT_EQ(queue(), "A1 movie.AVI1 B4 C6");
  EXPECT_EQ(added, manager().at(1));
  EXPECT_EQ(added->getContentProviderDisplayName(), L"films.example");
  EXPECT_EQ(written(), "A1 movie.AVI1 B4 C6");
}

TEST_F(AddingTest, AddingAnnouncesTheListTwiceThenTheAdding) {
  begin("");
  addFilm(L"A");
  EXPECT_EQ(notices(), (Lines{"view.listChanged", "view.listChanged", "view.itemsAdded"}));
}

TEST_F(AddingTest, AnUnsupportedTypeIsNullAndChangesNothing) {
  begin("A1");
  EXPECT_EQ(manager().add(L"http://films.example/dir/movie.txt", L"", L""), nullptr);
  EXPECT_EQ(queue(), "A1");
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_FALSE(isWritten());
}

TEST_F(AddingTest, TheSameAddressMayBeAddedTwice) {
  begin("");
  EXPECT_NE(addFilm(L"A"), addFilm(L"A"));
  EXPECT_EQ(queue(), "A1 A1");
}

TEST_F(AddingTest, AddingEndsAPause) {
  begin("A3 B1");
  manager().pause();
  ASSERT_EQ(queue(), "A0 B1");
  addFilm(L"C");
  EXPECT_FALSE(manager().isPaused());
  EXPECT_EQ(queue(), "A1 B1 C1");
}

TEST_F(AddingTest, AddingQueuesTheRunningItemAnew) {
  given("A1");
  start();
  transferOf("A");
  await("A3");
  addFilm(L"C");
  EXPECT_EQ(queue(), "A1 C1");
  EXPECT_TRUE(stoppedSessions().empty()) << "its transfer goes on";
}

TEST_F(AddingTest, AddingStartsTheDownload) {
  support::ScriptedServer server;
  server.always(support::Script::answer(support::bareResponse("200 OK", "Content-Length: 9\r\n")));
  given("");
  start();
  manager().add(kvpm::StringTools::stringToWString(server.url("/a.avi")), L"A", L"");
  transferOf("A");
  await("A3");
}

TEST_F(AddingTest, PlayingFromTheNoticeOfTheAddingWaitsForTheTransfer) {
  given("A1", [](Item& item) { item.setPercentDownloaded(30); });
  start();
  transferOf("A");
  await("A3");
  bool played = false;
  view_.onEvent([&](const std::string& line) {
    if (line == "view.itemsAdded") played = manager().play(id("A"));
  });
  addFilm(L"C");
  EXPECT_TRUE(played);
  EXPECT_EQ(queue(), "A3 C1");
}

TEST_F(AddingTest, WithoutAViewAddingTellsNobody) {
  begin("");
  manager().setViewInterface(nullptr);
  EXPECT_NE(addFilm(L"A"), nullptr);
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_FALSE(isWritten());
}

// Putting the download of a path first.

TEST_F(AddingTest, ResumingAFilePutsItsUnfinishedItemFirst) {
  for (const char* const status : {"0", "1", "2", "3"}) {
    begin("X5 A4 B" + std::string(status));
    manager().resumeDownloadingFile(mediaFile("b.VESK").wstring());
    EXPECT_EQ(queue(), "B1 X1 A4");
    shutDown();
    playerx::ThreadGate::open();
  }
}

TEST_F(AddingTest, ResumingAFileLeavesOtherItemsWhereTheyAre) {
  begin("X1 A4 B5 C6 D1");
  manager().updateStatus(id("D"), DownloadStatusHeld);
  log_.clear();
  for (const char* const name : {"A.vesk", "B.vesk", "C.vesk", "D.vesk", "missing.vesk"}) {
    manager().resumeDownloadingFile(mediaFile(name).wstring());
  }
  EXPECT_EQ(queue(), "X1 A4 B5 C6 D7");
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(AddingTest, ResumingTheFileOfTheRunningItemStopsNothing) {
  given("A1 B1");
  start();
  transferOf("A");
  await("A3 B1");
  manager().resumeDownloadingFile(mediaFile("A.vesk").wstring());
  EXPECT_TRUE(stoppedSessions().empty());
  EXPECT_EQ(queue(), "A3 B1");
}

TEST_F(AddingTest, ResumingAFileWhilePausedMovesThePausedMark) {
  begin("A3 B1");
  manager().pause();
  ASSERT_EQ(queue(), "A0 B1");
  manager().resumeDownloadingFile(mediaFile("B.vesk").wstring());
  EXPECT_EQ(queue(), "B0 A1");
  EXPECT_TRUE(manager().isPaused());
}

}  // namespace
