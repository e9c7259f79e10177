#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QSettings>
#include <array>

#include "KPX/KPXPreferences.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "playerx/settings/Folders.h"
#include "tests/unit/plugin/ManagerFixture.h"

namespace {

namespace fs = std::filesystem;

class StartTest : public ManagerFixture {
 protected:
  static constexpr char kFailedItem[] =
      "<drmAuth:DownloadManagerVideoElement status=\"6\" fileSize=\"5\"/>";

  void givenLegacyQueue(const std::string& items = kFailedItem) {
    support::writeFile(legacyFile(),
                       "<drmAuth:DownloadManagerDataContainer "
                       "xmlns:drmAuth=\"com.vesk.container\" version=\"1\" >" +
                           items + "</drmAuth:DownloadManagerDataContainer>");
  }
  fs::path legacyFile() const { return folder_ / "data" / "DownloadQueue.dlq"; }
};

TEST_F(StartTest, TheFirstStartLeavesAnEmptyQueueFile) {
  startAsleep();
  EXPECT_EQ(queue(), "");
  EXPECT_TRUE(isWritten());
  EXPECT_FALSE(fs::exists(legacyFile()));
}

TEST_F(StartTest, TheQueueOfTheEarlierReleaseIsMigrated) {
  givenLegacyQueue();
  startAsleep();
  EXPECT_EQ(queue(), "6");
  EXPECT_EQ(written(), "6");
  EXPECT_FALSE(fs::exists(legacyFile()));
}

TEST_F(StartTest, WithBothFilesTheEarlierReleasesIsLeftAlone) {
  given("A1");
  givenLegacyQueue();
  startAsleep();
  EXPECT_EQ(queue(), "A1");
  EXPECT_TRUE(fs::exists(legacyFile()));
}

TEST_F(StartTest, AnUnreadableQueueIsKeptBesideTheOneThatReplacesIt) {
  support::writeFile(queueFile(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?><DownloadQueue><Do");
  startAsleep();
  EXPECT_EQ(queue(), "");
  EXPECT_FALSE(fs::exists(queueFile().string() + ".unreadable"));
  manager().add(L"http://h/a.avi", L"A", L"P");
  EXPECT_EQ(written(), "A1");
  EXPECT_EQ(support::readFile(queueFile().string() + ".unreadable"),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?><DownloadQueue><Do");
}

TEST_F(StartTest, AHeldItemComesBackAsADownloadingOne) {
  startAsleep("A7 B1");
  EXPECT_EQ(queue(), "A3 B1");
}

TEST_F(StartTest, TheQueueOfTheEarlierReleaseKeepsItsOrder) {
  givenLegacyQueue(
      "<drmAuth:DownloadManagerVideoElement status=\"6\" fileSize=\"5\"/>"
      "<drmAuth:DownloadManagerVideoElement status=\"1\" fileSize=\"9\"/>"
      "<drmAuth:DownloadManagerVideoElement status=\"4\" fileSize=\"7\"/>");
  startAsleep();
  EXPECT_EQ(queue(), "6 1 4");
  EXPECT_EQ(written(), "6 1 4");
  for (unsigned int i = 0; i < 3; ++i) {
    EXPECT_EQ(manager().at(i)->getSize(), (std::array{5U, 9U, 7U}.at(i)));
  }
}

TEST_F(StartTest, TheQueueStaysWhereItWasFound) {
  startAsleep("A1");
  const fs::path other = folder_ / "other";
  fs::create_directory(other);
  playerx::setApplicationDataPath(QString::fromStdString(other.string()));
  forgetFile();
  EXPECT_TRUE(manager().updateStatus(id("A"), DownloadStatusFailed));
  EXPECT_EQ(written(), "A6");
  EXPECT_TRUE(fs::is_empty(other));
}

TEST_F(StartTest, NeitherStartingNorAttachingAViewAnnouncesOrWritesAnything) {
  given("A1");
  support::writeFile(queueFile(), support::readFile(queueFile()) + "<!-- as it was -->\n");
  const std::string before = support::readFile(queueFile());
  startAsleep();
  EXPECT_EQ(queue(), "A1");
  EXPECT_EQ(support::readFile(queueFile()), before);
  EXPECT_TRUE(log_.lines("view.").empty());
}

TEST_F(StartTest, TheManagerKeepsAReferenceToItselfUntilItIsShutDown) {
  startAsleep();
  EXPECT_EQ(manager().kpimHoldCount(), 2);
  EXPECT_EQ(manager().kpimGetPluginContext(), &context_);
  manager().kpimRetain();
  manager().Shutdown();
  EXPECT_EQ(manager().kpimHoldCount(), 2);
  manager().kpimRelease();
}

TEST_F(StartTest, OffersItsTwoInterfacesAndNoOther) {
  startAsleep();
  void* face = nullptr;
  EXPECT_EQ(manager().kpimGetInterface(VeskPlayerX::DIN_DownloadManager, &face), 0);
  EXPECT_EQ(face, static_cast<VeskPlayerX::DownloadManagerInterface*>(&manager()));
  EXPECT_EQ(manager().kpimGetInterface(VeskPlayerX::DIN_Shutdown, &face), 0);
  EXPECT_EQ(face, static_cast<VeskPlayerX::ShutdownInterface*>(&manager()));
  for (const char* const id : {VeskPlayerX::DIN_Player, VeskPlayerX::DIN_ZPSServices, "",
                               "com.vesk.playerX.pluginInterface.shutdown"}) {
    face = this;
    EXPECT_EQ(manager().kpimGetInterface(id, &face), 3) << id;
    EXPECT_EQ(face, this) << id;
  }
}

TEST_F(StartTest, CreatesTheSharedPreferencesAndDeletesThemAtTheEnd) {
  QCoreApplication::setOrganizationName("Organisation");
  QCoreApplication::setApplicationName("Application");
  ASSERT_EQ(KPXPreferences::userSettings, nullptr);
  startAsleep();
  ASSERT_NE(KPXPreferences::userSettings, nullptr);
  EXPECT_EQ(KPXPreferences::userSettings->organizationName(), "Organisation");
  EXPECT_EQ(KPXPreferences::userSettings->applicationName(), "Settings");
  EXPECT_EQ(KPXPreferences::userSettings->group(), "Application");
  EXPECT_EQ(KPXPreferences::userSettings->scope(), QSettings::UserScope);
  shutDown();
  EXPECT_EQ(KPXPreferences::userSettings, nullptr);
}

TEST_F(StartTest, UsesPreferencesThatAreThereAlready) {
  auto* const settings = new QSettings(QSettings::UserScope, "Organisation", "Settings");
  KPXPreferences::userSettings = settings;
  startAsleep();
  EXPECT_EQ(KPXPreferences::userSettings, settings);
}

TEST_F(StartTest, WorksOnTheQueueAtOnce) {
  given("A1");
  start();
  transferOf("A");
  await("A3");
}

TEST_F(StartTest, DeletesPreferencesThatWereMadeAfterTheShutdown) {
  startAsleep();
  manager().Shutdown();
  ASSERT_EQ(KPXPreferences::userSettings, nullptr);
  KPXPreferences::userSettings = new QSettings(QSettings::UserScope, "Organisation", "Settings");
  shutDown();
  EXPECT_EQ(KPXPreferences::userSettings, nullptr);
}

}  // namespace
