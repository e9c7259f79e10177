#include <algorithm>

#include "playerx/platform/ThreadGate.h"
#include "tests/unit/plugin/AddingFixture.h"

namespace {

/// A protected file that is opened for playback.
class FileOpenedTest : public AddingFixture {
 protected:
  void opened(const std::string& title, std::uint64_t wholeSize) {
    VeskDrmPlaybackAuthorizationResponse response;
    response.fileSize = wholeSize;
    response.title = kvpm::StringTools::stringToWString(title);
    response.ticket = "ticket " + title;
    VeskDrmTransactionRecord transaction;
    transaction.contentEncryptionUsageId = 5;
    manager().zpsFileOpenedForPlayback(file_.wstring(), &response, &transaction);
  }

  const std::filesystem::path file_ = folder_.write("media/film.vesk", "ten bytes!");
};

TEST_F(FileOpenedTest, ACompleteFileChangesNothing) {
  begin("A1 B6");
  opened("B", 10);
  opened("B", 9);
  EXPECT_EQ(queue(), "A1 B6");
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(FileOpenedTest, AFileThatCannotBeOpenedChangesNothing) {
  std::filesystem::remove(file_);
  begin("A1 B6");
  opened("B", 11);
  EXPECT_EQ(queue(), "A1 B6");
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(FileOpenedTest, AnUnfinishedDownloadOfItIsPutFirst) {
  for (const char* const status : {"0", "1", "5", "6"}) {
    begin("A3 X1 B" + std::string(status));
    opened("B", 11);
    EXPECT_EQ(queue(), "B1 A1 X1");
    EXPECT_FALSE(manager().isPaused());
    EXPECT_EQ(notices().back(), "view.itemsAdded");
    shutDown();
    playerx::ThreadGate::open();
  }
}

TEST_F(FileOpenedTest, ADownloadThatIsUnderWayIsLeftAlone) {
  begin("A1 B2 C3 D1");
  manager().updateStatus(id("D"), DownloadStatusHeld);
  log_.clear();
  for (const char* const title : {"B", "C", "D"}) opened(title, 11);
  EXPECT_EQ(queue(), "A1 B2 C3 D7");
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(FileOpenedTest, AFileWithoutDownloadIsQueuedFirst) {
  begin("A3 B4");
  opened("N", 1ULL << 40);
  EXPECT_EQ(queue(), "N1 A1 B4");
  EXPECT_EQ(item("N").getPath(), file_.wstring());
  EXPECT_EQ(item("N").getSize(), 1ULL << 40);
  EXPECT_EQ(item("N").getTicket(), "ticket N");
  EXPECT_EQ(item("N").getContentEncryptionUsageId(), 5);
  EXPECT_TRUE(item("N").getEncrypted());
  EXPECT_FALSE(manager().isPaused());
  EXPECT_EQ(notices().back(), "view.itemsAdded");
  EXPECT_EQ(written(), "N1 A1 B4");
}

TEST_F(FileOpenedTest, ACompletedDownloadOfItStaysCompleted) {
  begin("A3 B4");
  opened("B", 11);
  EXPECT_EQ(queue(), "B4 A1");
}

TEST_F(FileOpenedTest, ItEndsAPause) {
  begin("A3 B1");
  manager().pause();
  opened("B", 11);
  EXPECT_EQ(queue(), "B1 A1");
  EXPECT_FALSE(manager().isPaused());
}

TEST_F(FileOpenedTest, ItStopsTheTransferThatRuns) {
  given("A1 B6");
  start();
  const auto uid = transferOf("A");
  await("A3 B6");
  opened("B", 11);
  EXPECT_EQ(stoppedSessions(), Uids{uid});
  transferOf("B");
  await("B3 A1");
}

TEST_F(FileOpenedTest, MissingRecordsAreTolerated) {
  begin("A1");
  manager().zpsFileOpenedForPlayback(file_.wstring(), nullptr, nullptr);
  EXPECT_EQ(queue(), "A1");
  VeskDrmPlaybackAuthorizationResponse response;
  response.fileSize = 11;
  response.title = L"N";
  manager().zpsFileOpenedForPlayback(file_.wstring(), &response, nullptr);
  EXPECT_EQ(queue(), "N1 A1");
}

TEST_F(FileOpenedTest, EachStepIsAnnouncedInItsOrder) {
  struct {
    const char* title;
    Lines announced;
  } const cases[] = {
      {"B",  // parked, moved up twice, resumed
       {"view.listChanged", "view.listChanged", "view.listChanged", "view.listChanged",
        "view.itemsAdded"}},
      {"N",  // parked, moved up twice, resumed; the adding is told of by the first move
       {"view.listChanged", "view.listChanged", "view.listChanged", "view.listChanged",
        "view.itemsAdded"}},
  };
  for (const auto& one : cases) {
    begin("A3 X1 B6");
    opened(one.title, 11);
    EXPECT_EQ(notices(), one.announced) << one.title;
    shutDown();
  }
}

TEST_F(FileOpenedTest, ItIsQueuedBeforeTheQueueIsParked) {
  struct {
    const char* before;
    const char* parked;
  } const cases[] = {{"A3 B6", "A0 B1"}, {"A1 B0", "A1 B1"}, {"A1 B5", "A1 B1"}};
  for (const auto& one : cases) {
    begin(one.before);
    std::string first;
    view_.onEvent([&](const std::string&) {
      if (first.empty()) first = queue();
    });
    opened("B", 11);
    EXPECT_EQ(first, one.parked) << one.before;
    view_.onEvent({});
    shutDown();
  }
}

TEST_F(FileOpenedTest, AHeldTransferBelowAParkedItemIsStopped) {
  given("B1 A1");
  start();
  transferOf("B");  // the library is there from here on
  await("B3 A1");
  manager().pause();
  manager().updateStatus(id("A"), DownloadStatusHeld);
  item("A").setUID(77);
  ASSERT_EQ(queue(), "B0 A7");
  opened("B", 11);
  const Uids stopped = stoppedSessions();
  EXPECT_EQ(std::count(stopped.begin(), stopped.end(), 77U), 1);
  EXPECT_EQ(manager().at(1)->getId(), id("A"));
}

}  // namespace
