#include "tests/unit/plugin/ManagerFixture.h"

namespace {

using Lines = std::vector<std::string>;

class AnnouncementsTest : public ManagerFixture {
 protected:
  void SetUp() override {
    startAsleep("A1 B1");
    item("B").setTicket("another");
    forgetFile();
    log_.clear();
  }

  /// What announcing A sends to the view.
  Lines announcedA() { return {"view.itemChanged " + std::to_string(id("A"))}; }
};

TEST_F(AnnouncementsTest, APathIsStoredAndAnnounced) {
  EXPECT_TRUE(manager().updatePath(id("A"), L"/films/a.vesk"));
  EXPECT_EQ(item("A").getPath(), L"/films/a.vesk");
  EXPECT_EQ(notices(), announcedA());
  EXPECT_TRUE(isWritten());
}

TEST_F(AnnouncementsTest, ASizeIsStoredAndAnnounced) {
  EXPECT_TRUE(manager().updateSize(id("A"), 1ULL << 40));
  EXPECT_EQ(item("A").getSize(), 1ULL << 40);
  EXPECT_EQ(notices(), announcedA());
  EXPECT_TRUE(isWritten());
}

TEST_F(AnnouncementsTest, ASlotIsStoredAndAnnounced) {
  EXPECT_TRUE(manager().updateSlotAssignment(id("A"), 4));
  EXPECT_EQ(item("A").getSlotNumber(), 4);
  EXPECT_EQ(notices(), announcedA());
  EXPECT_TRUE(isWritten());
}

TEST_F(AnnouncementsTest, ATornTicketIsStoredAndAnnounced) {
  EXPECT_TRUE(manager().setTicketAlreadyTorn(id("A")));
  EXPECT_TRUE(item("A").getTicketAlreadyTorn());
  EXPECT_EQ(notices(), announcedA());
  EXPECT_TRUE(isWritten());
}

TEST_F(AnnouncementsTest, BeingPlayableIsStoredAndAnnounced) {
  EXPECT_TRUE(manager().setPlayable(id("A"), true));
  EXPECT_TRUE(item("A").getReadyForProgressivePlayback());
  EXPECT_TRUE(manager().setPlayable(id("A"), false));
  EXPECT_FALSE(item("A").getReadyForProgressivePlayback());
  EXPECT_EQ(notices().size(), 2U);
  EXPECT_TRUE(isWritten());
}

TEST_F(AnnouncementsTest, AValueThatIsThereAlreadyIsAnnouncedAgain) {
  const std::function<bool()> sets[] = {
      [&] { return manager().updatePath(id("A"), L"/films/a.vesk"); },
      [&] { return manager().updateSize(id("A"), 5); },
      [&] { return manager().updateSlotAssignment(id("A"), 4); },
      [&] { return manager().setTicketAlreadyTorn(id("A")); },
      [&] { return manager().setPlayable(id("A"), true); },
  };
  for (const auto& set : sets) {
    EXPECT_TRUE(set());
    log_.clear();
    EXPECT_TRUE(set());
    EXPECT_EQ(notices(), announcedA()) << &set - sets;
  }
}

TEST_F(AnnouncementsTest, AnAddressIsStoredSilently) {
  EXPECT_TRUE(manager().setDownloadUrl(id("A"), L"http://h/new.vesk"));
  EXPECT_EQ(item("A").getUrl(), L"http://h/new.vesk");
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_FALSE(isWritten());
}

TEST_F(AnnouncementsTest, ATicketIdIsStoredSilently) {
  EXPECT_TRUE(manager().setTicketId(id("A"), 7));
  EXPECT_EQ(item("A").getTicketId(), 7);
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_FALSE(isWritten());
}

TEST_F(AnnouncementsTest, ADownloadInfoIsStoredWholeAndSilently) {
  KPB::DownloadInfo info;
  info.setTempUsername("user");
  info.setOutputFilename("a.vesk");
  const unsigned char chunk[] = {1, 0, 2};
  info.setSTRDChunk(chunk, sizeof(chunk));
  EXPECT_TRUE(manager().setDownloadInfo(id("A"), info));
  EXPECT_EQ(item("A").getDownloadInfo(), info);
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_FALSE(isWritten());
}

TEST_F(AnnouncementsTest, WhatWasSetSilentlyIsWrittenWithTheNextAnnouncement) {
  manager().setDownloadUrl(id("A"), L"http://h/new.vesk");
  manager().updateSize(id("B"), 5);
  EXPECT_NE(support::readFile(queueFile()).find("http://h/new.vesk"), std::string::npos);
}

TEST_F(AnnouncementsTest, AnUnknownIdIsFalseAndChangesNothing) {
  EXPECT_FALSE(manager().updatePath(0, L"/x"));
  EXPECT_FALSE(manager().updateSize(0, 1));
  EXPECT_FALSE(manager().updateSlotAssignment(0, 1));
  EXPECT_FALSE(manager().setTicketAlreadyTorn(0));
  EXPECT_FALSE(manager().setPlayable(0, true));
  EXPECT_FALSE(manager().setDownloadUrl(0, L"x"));
  EXPECT_FALSE(manager().setTicketId(0, 1));
  EXPECT_FALSE(manager().setDownloadInfo(0, {}));
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_FALSE(isWritten());
}

TEST_F(AnnouncementsTest, TheWholeQueueIsWrittenBeforeTheViewIsTold) {
  std::string seen;
  view_.onEvent([&](const std::string&) { seen = written(); });
  manager().updateSize(id("B"), 5);
  EXPECT_EQ(seen, "A1 B1");
}

TEST_F(AnnouncementsTest, TheViewIsToldWithTheQueueUnlocked) {
  std::string seen;
  view_.onEvent([&](const std::string&) {
    std::thread other([&] { seen = queue(); });
    other.join();
  });
  manager().updateSize(id("B"), 5);
  EXPECT_EQ(seen, "A1 B1");
}

TEST_F(AnnouncementsTest, ReportsOfOtherThreadsDoNotWaitForAnOperation) {
  const unsigned int a = id("A");
  view_.onEvent([&](const std::string& line) {
    if (line != "view.listChanged") return;
    std::thread other([&] {
      EXPECT_TRUE(manager().setTicketAlreadyTorn(a));
      EXPECT_TRUE(manager().setTicketId(a, 7));
      EXPECT_TRUE(manager().setDownloadUrl(a, L"http://h/granted.vesk"));
    });
    other.join();
  });
  manager().remove(id("B"));
  EXPECT_TRUE(item("A").getTicketAlreadyTorn());
  EXPECT_EQ(item("A").getTicketId(), 7);
  EXPECT_EQ(item("A").getUrl(), L"http://h/granted.vesk");
}

TEST_F(AnnouncementsTest, WithoutAViewNoOperationWritesTheQueue) {
  manager().setViewInterface(nullptr);
  const unsigned int a = id("A");
  const unsigned int b = id("B");
  manager().updatePath(a, L"/x");
  manager().updateSize(a, 1);
  manager().updateSlotAssignment(a, 1);
  manager().setTicketAlreadyTorn(a);
  manager().setDownloadUrl(a, L"x");
  manager().setDownloadInfo(a, {});
  manager().setPlayable(a, true);
  manager().setTicketId(a, 1);
  manager().updateStatus(a, DownloadStatusDownloading);
  manager().updateDownloadProgress(a, 10);
  manager().moveUp(b);
  manager().moveDown(b);
  manager().moveToTop(b);
  manager().moveToBottom(b);
  manager().pause();
  manager().resume();
  manager().cancel();
  manager().updateStatus(b, DownloadStatusFailed);
  manager().retry(b);
  manager().play(b);
  manager().resumeDownloadingFile(L"/x");
  manager().resumePlaybackForUrl(L"http://h/c.avi");
  manager().add(L"http://h/c.avi", L"C", L"P");
  const auto clear = folder_.write("d.tix", "TixVeskVersion=1.0\nstart\nurl=http://h/d.avi\nend\n");
  EXPECT_EQ(manager().addTicket(clear.wstring(), false).size(), 1U);
  services_.setTicketRecords({record(L"E")});
  EXPECT_EQ(manager().addTicket(L"/e.tix", false).size(), 1U);
  const auto opened = folder_.write("media/f.vesk", "ten bytes!");
  const VeskDrmPlaybackAuthorizationResponse response{11, L"F", "ticket F"};
  for (int i = 0; i < 2; ++i) {  // not queued yet, then queued
    manager().zpsFileOpenedForPlayback(opened.wstring(), &response, nullptr);
  }
  manager().updateStatus(a, DownloadStatusCompleted);
  manager().clearCompletedDownloads();
  manager().remove(b);
  EXPECT_FALSE(isWritten());
  EXPECT_TRUE(log_.lines("view.").empty());
}

TEST_F(AnnouncementsTest, AViewThatIsDetachedIsToldNothingMore) {
  manager().setViewInterface(nullptr);
  manager().updateSize(id("A"), 5);
  EXPECT_TRUE(notices().empty());
  manager().setViewInterface(&view_);
  manager().updateSize(id("A"), 6);
  EXPECT_EQ(notices(), announcedA());
}

TEST_F(AnnouncementsTest, AViewMayRemoveTheItemThatItIsToldOf) {
  const unsigned int a = id("A");
  view_.onEvent([&](const std::string& line) {
    if (line == "view.itemChanged " + std::to_string(a)) manager().remove(a);
  });
  EXPECT_TRUE(manager().updateStatus(a, DownloadStatusFailed));
  EXPECT_EQ(queue(), "B1");
}

TEST_F(AnnouncementsTest, TheWholeQueueIsWrittenBeforeTheViewIsToldOfTheList) {
  std::string seen;
  view_.onEvent([&](const std::string&) { seen = written(); });
  manager().remove(id("A"));
  EXPECT_EQ(seen, "B1");
}

TEST_F(AnnouncementsTest, TheViewIsToldOfTheListWithTheQueueUnlocked) {
  std::string seen;
  view_.onEvent([&](const std::string&) {
    std::thread other([&] { seen = queue(); });
    other.join();
  });
  manager().remove(id("A"));
  EXPECT_EQ(seen, "B1");
}

TEST_F(AnnouncementsTest, AttachingAViewWritesAndTellsNothing) {
  manager().setViewInterface(nullptr);
  manager().setViewInterface(&view_);
  EXPECT_FALSE(isWritten());
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(AnnouncementsTest, APickWithoutAViewWritesNothing) {
  manager().setViewInterface(nullptr);
  wakeScheduler();
  transferOf("A");
  await("A3 B1");
  EXPECT_FALSE(isWritten());
  EXPECT_TRUE(log_.lines("view.").empty());
}

TEST_F(AnnouncementsTest, TheWorkerToldOfADetachedViewTellsItNothing) {
  support::EventLog otherLog;
  support::FakeView other(otherLog);
  const std::string b = std::to_string(id("B"));
  wakeScheduler();
  const auto first = transferOf("A");
  await("A3 B1");
  manager().setViewInterface(nullptr);
  log_.clear();
  library_.broke(first);
  const auto second = transferOf("B");
  await("B3 A6");
  manager().setViewInterface(&other);
  library_.broke(second);
  await("A6 B6");
  manager().setViewInterface(nullptr);
  EXPECT_TRUE(log_.lines("view.").empty());
  EXPECT_EQ(otherLog.lines("view.broken"), Lines{"view.broken " + mediaFile("B.vesk").string()});
  EXPECT_EQ(otherLog.lines("view.refresh"), Lines{"view.refresh " + b});
}

}  // namespace
