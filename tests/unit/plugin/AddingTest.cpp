#include "playerx/platform/ThreadGate.h"
#include "tests/unit/plugin/ManagerTest.h"

namespace {

using Lines = std::vector<std::string>;

class AddingTest : public ManagerTest {
 protected:
  void begin(const std::string& queue, const Change& change = {}) {
    startAsleep(queue, change);
    forgetFile();
    log_.clear();
  }

  VeskPlayerX::DownloadItemInterface* addFilm(const std::wstring& title) {
    return manager().add(L"http://films.example/" + title + L".avi", title, L"");
  }

  /// A clear ticket's file.
  std::wstring clearTicket(const std::string& blocks) {
    return folder_.write("clear.tix", "TixVeskVersion=1.0\n" + blocks).wstring();
  }
};

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
  EXPECT_EQ(manager().add(L"http://films.example/dir/movie.mp4", L"", L""), nullptr);
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

TEST_F(AddingTest, AddingStartsTheDownload) {
  given("");
  start();
  services_.setTicketRecords({record(L"A")});
  manager().addTicket(L"/a.tix", true);
  transferOf("A");
  await("A3");
}

TEST_F(AddingTest, WithoutAViewAddingTellsNobody) {
  begin("");
  manager().setViewInterface(nullptr);
  EXPECT_NE(addFilm(L"A"), nullptr);
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_FALSE(isWritten());
}

// Tickets.

TEST_F(AddingTest, AClearTicketGivesItsItemsInOrder) {
  begin("A1 B4");
  const auto added = manager().addTicket(
      clearTicket(
          "start\nurl=http://h/c.avi\ntitle=C\nend\nstart\nurl=http://h/d.avi\ntitle=D\nend\n"),
      false);
  EXPECT_EQ(queue(), "A1 C1 D1 B4");
  EXPECT_EQ(added, (std::vector<Item*>{manager().at(1), manager().at(2)}));
  EXPECT_EQ(notices(), (Lines{"view.itemsAdded", "view.listChanged", "view.listChanged"}));
}

TEST_F(AddingTest, DoubleQuotesAroundATicketsNameAreDropped) {
  begin("");
  const std::wstring ticket = clearTicket("start\nurl=http://h/c.avi\ntitle=C\nend\n");
  EXPECT_EQ(manager().addTicket(L"\"" + ticket + L"\"", false).size(), 1U);
  EXPECT_EQ(log_.lines("services."),
            Lines{"services.readTicket " + kvpm::StringTools::wStringToString(ticket)});
}

TEST_F(AddingTest, AClearTicketWithoutItemsGivesNoneButIsAnnounced) {
  begin("A1");
  EXPECT_TRUE(manager().addTicket(L"/missing.tix", false).empty());
  EXPECT_EQ(queue(), "A1");
  EXPECT_EQ(notices().front(), "view.itemsAdded");
}

TEST_F(AddingTest, WithoutOnlineServicesATicketGivesNothingAndNobodyIsTold) {
  begin("A3");
  manager().pause();
  log_.clear();
  forgetFile();
  context_.answer("com.vesk.playerX.pluginInterface.ZPSServices", KPIM::kLoadFailed);
  const std::wstring ticket = clearTicket("start\nurl=http://h/c.avi\nend\n");
  EXPECT_TRUE(manager().addTicket(ticket, false).empty());
  EXPECT_EQ(queue(), "A0");
  EXPECT_TRUE(manager().isPaused());
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_FALSE(isWritten());
  context_.answer("com.vesk.playerX.pluginInterface.ZPSServices", KPIM::kSuccess);
  EXPECT_EQ(manager().addTicket(ticket, false).size(), 1U) << "they are looked up anew";
}

TEST_F(AddingTest, AProtectedTicketGivesAnItemForEachRecord) {
  begin("A1");
  services_.setTicketRecords({record(L"C", 5), record(L"D", 6)});
  const auto added = manager().addTicket(L"/cd.tix", false);
  ASSERT_EQ(added.size(), 2U);
  EXPECT_EQ(queue(), "A1 C1 D1");
  EXPECT_EQ(added[0], manager().at(1));
  EXPECT_TRUE(added[0]->getEncrypted());
  EXPECT_EQ(added[0]->getTicket(), "ticket C");
  EXPECT_EQ(added[0]->getContentEncryptionUsageId(), 5);
  EXPECT_EQ(notices(), (Lines{"view.itemsAdded", "view.listChanged", "view.listChanged"}));
}

TEST_F(AddingTest, AProtectedTicketEndsAPause) {
  begin("A3");
  manager().pause();
  services_.setTicketRecords({record(L"B")});
  manager().addTicket(L"/b.tix", false);
  EXPECT_FALSE(manager().isPaused());
  EXPECT_EQ(queue(), "A1 B1");
}

TEST_F(AddingTest, AProtectedTicketReplacesEndedDownloadsOfTheSameContent) {
  begin("A4 B6 C4 D1 E5", [](Item& item) {
    const bool same = item.getTitle() != L"C";
    item.setContentEncryptionUsageId(same ? 5 : 6);
  });
  services_.setTicketRecords({record(L"N", 5)});
  EXPECT_EQ(manager().addTicket(L"/n.tix", false).size(), 1U);
  EXPECT_EQ(queue(), "C4 D1 E5 N1") << "neither other content nor what is still to come";
}

TEST_F(AddingTest, ATicketThatIsQueuedAlreadyIsNotQueuedAgain) {
  begin("A1", [](Item& item) { item.setContentEncryptionUsageId(5); });
  services_.setTicketRecords({record(L"A", 5), record(L"B", 6)});
  const auto added = manager().addTicket(L"/ab.tix", false);
  EXPECT_EQ(queue(), "A1 B1");
  ASSERT_EQ(added.size(), 2U);
  EXPECT_EQ(added[0]->getTitle(), L"A");
  EXPECT_EQ(manager().get(added[0]->getId()), nullptr) << "returned, yet not queued";
  EXPECT_EQ(added[1], manager().at(1));
}

TEST_F(AddingTest, AnItemThatWasRefusedLivesAsLongAsTheManager) {
  begin("A1");
  services_.setTicketRecords({record(L"A")});
  Item* const refused = manager().addTicket(L"/a.tix", false).at(0);
  manager().remove(id("A"));
  EXPECT_EQ(refused->getTicket(), "ticket A");
}

TEST_F(AddingTest, AnUnprotectedItemWithAQueuedTicketTextIsAdded) {
  begin("A1", [](Item& item) { item.setTicket(""); });
  const std::wstring ticket = clearTicket("start\nurl=http://h/c.avi\ntitle=C\nend\n");
  EXPECT_EQ(manager().addTicket(ticket, false).size(), 1U);
  EXPECT_EQ(queue(), "A1 C1");
}

// A protected file that is opened for playback.

class FileOpenedTest : public AddingTest {
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
  opened("N", 11);
  EXPECT_EQ(queue(), "N1 A1 B4");
  EXPECT_EQ(item("N").getPath(), file_.wstring());
  EXPECT_EQ(item("N").getSize(), 11U);
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

TEST_F(FileOpenedTest, RecordsThatAreMissingAreBorne) {
  begin("A1");
  manager().zpsFileOpenedForPlayback(file_.wstring(), nullptr, nullptr);
  EXPECT_EQ(queue(), "A1");
  VeskDrmPlaybackAuthorizationResponse response;
  response.fileSize = 11;
  response.title = L"N";
  manager().zpsFileOpenedForPlayback(file_.wstring(), &response, nullptr);
  EXPECT_EQ(queue(), "N1 A1");
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

}  // namespace
