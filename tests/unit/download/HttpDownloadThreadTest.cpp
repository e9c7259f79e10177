#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QSettings>
#include <type_traits>

#include "KPX/KPXPreferences.h"
#include "download/HttpDownloadThread.h"
#include "download/SharedPreferences.h"
#include "tests/support/VtableSlots.h"
#include "tests/unit/download/WorkerFixture.h"

namespace {

using support::slotOf;

// An operation added to the interface comes to lie behind its last one.
struct ExtendedInterface : DownloadThreadInterface {
  virtual void behindTheLast() = 0;
};

TEST(HttpDownloadThread, CreatesThePlayersPreferencesWhenThereAreNone) {
  support::FakeContext context;
  QCoreApplication::setOrganizationName("Organisation");
  QCoreApplication::setApplicationName("Application");
  ASSERT_EQ(KPXPreferences::userSettings, nullptr);
  {
    const HttpDownloadThread worker(&context);
    const QSettings* const settings = KPXPreferences::userSettings;
    ASSERT_NE(settings, nullptr);
    EXPECT_EQ(settings->scope(), QSettings::UserScope);
    EXPECT_EQ(settings->organizationName(), "Organisation");
    EXPECT_EQ(settings->applicationName(), "Settings");
    EXPECT_EQ(settings->group(), "Application");
  }
  EXPECT_EQ(KPXPreferences::userSettings, nullptr);
}

TEST(HttpDownloadThread, TakesPreferencesThatAreThereThenDeletesThem) {
  support::FakeContext context;
  const support::TempDir dir;
  auto* const mine =
      new QSettings(QString::fromStdString((dir / "mine.ini").string()), QSettings::IniFormat);
  KPXPreferences::userSettings = mine;
  {
    const HttpDownloadThread worker(&context);
    EXPECT_EQ(KPXPreferences::userSettings, mine);
  }
  EXPECT_EQ(KPXPreferences::userSettings, nullptr);
}

TEST(HttpDownloadThread, LeavesThePreferencesToAnotherWorker) {
  support::FakeContext context;
  auto leaving = std::make_unique<HttpDownloadThread>(&context);
  const QSettings* const settings = KPXPreferences::userSettings;
  {
    const HttpDownloadThread next(&context);
    leaving.reset();
    download::SharedPreferences::deleteUnused();
    EXPECT_EQ(KPXPreferences::userSettings, settings);
  }
  EXPECT_EQ(KPXPreferences::userSettings, nullptr);
}

TEST(SharedPreferences, AreDeletedOnRequestWhenUnused) {
  KPXPreferences::userSettings = new QSettings(QSettings::UserScope, "Organisation", "Settings");
  download::SharedPreferences::deleteUnused();
  EXPECT_EQ(KPXPreferences::userSettings, nullptr);
  download::SharedPreferences::deleteUnused();
}

TEST(HttpDownloadThread, FailsEveryItemWithoutAContext) {
  HttpDownloadThread worker(nullptr);
  EXPECT_EQ(worker.downloadVideo(new DownloadItem), DownloadStatusFailed);
  worker.stop();
  worker.stopDownload(1);
}

TEST(HttpDownloadThread, ImplementsTheWorkerInterface) {
  EXPECT_TRUE((std::is_base_of_v<DownloadThreadInterface, HttpDownloadThread>));
  EXPECT_TRUE(std::has_virtual_destructor_v<DownloadThreadInterface>);
  EXPECT_TRUE(std::is_abstract_v<DownloadThreadInterface>);
  EXPECT_EQ(sizeof(DownloadThreadInterface), sizeof(void*));  // no fields
  EXPECT_EQ(slotOf(&DownloadThreadInterface::getItem), 2);
  EXPECT_EQ(slotOf(&DownloadThreadInterface::downloadVideo), 3);
  EXPECT_EQ(slotOf(&DownloadThreadInterface::stop), 4);
  EXPECT_EQ(slotOf(&DownloadThreadInterface::setInterfaces), 5);
  EXPECT_EQ(slotOf(&DownloadThreadInterface::stopDownload), 6);
  EXPECT_EQ(slotOf(&DownloadThreadInterface::prepare), 7);
  EXPECT_EQ(slotOf(&DownloadThreadInterface::close), 8);
  EXPECT_EQ(slotOf(&ExtendedInterface::behindTheLast), 9);
}

class WorkerInterface : public support::WorkerTest {};

TEST_F(WorkerInterface, TellsTheTotalSizeOfMedia) {
  EXPECT_EQ(worker_->getTotalMediaSize(server_.url("/film.avi")), kLength);
}

TEST_F(WorkerInterface, TellsTheTotalSizeAfterAStoppedRunToo) {
  startAndFetch(film());
  worker_->stop();
  EXPECT_EQ(ended(), 5);
  EXPECT_EQ(worker_->getTotalMediaSize(server_.url("/film.avi")), kLength);
}

TEST_F(WorkerInterface, DetachesTheViewDuringARun) {
  startAndFetch(film());
  worker_->setInterfaces(&manager_, nullptr);
  library_.broke(kUid);
  EXPECT_EQ(ended(), 6);
  EXPECT_TRUE(views().empty());
}

}  // namespace
