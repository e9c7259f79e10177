#include <sys/stat.h>

#include <filesystem>
#include <thread>
#include <vector>

#include "KPX/OSUtilities.h"
#include "kvpm/PathTools.h"
#include "tests/unit/settings/SettingsFixture.h"

namespace {

namespace fs = std::filesystem;
using VeskPlayerX::OSUtilities;

class Folders : public settings_test::SettingsFixture {};

TEST_F(Folders, TheDataOfTheApplicationLiesBelowTheUsersData) {
  EXPECT_EQ(OSUtilities::getApplicationDataPath(), text(folder / "data" / "Org" / "App"));
}

TEST_F(Folders, ANewDataFolderIsTheUsersAlone) {
  const fs::path made = OSUtilities::getApplicationDataPath().toStdString();
  ASSERT_TRUE(fs::is_directory(made));
  EXPECT_EQ(fs::status(made).permissions(), fs::perms::owner_all);
}

TEST_F(Folders, ADataFolderThatIsThereStaysAsItIs) {
  fs::create_directories(folder / "mine");
  ASSERT_EQ(::chmod((folder / "mine").c_str(), 0750), 0);
  playerx::setApplicationDataPath(text(folder / "mine"));
  EXPECT_EQ(OSUtilities::getApplicationDataPath(), text(folder / "mine"));
  EXPECT_EQ(fs::status(folder / "mine").permissions(), fs::perms(0750));
}

TEST_F(Folders, ADataFolderThatCannotBeMadeIsNamedAllTheSame) {
  folder.write("file", "x");
  playerx::setApplicationDataPath(text(folder / "file" / "below"));
  EXPECT_EQ(OSUtilities::getApplicationDataPath(), text(folder / "file" / "below"));
  EXPECT_FALSE(fs::exists(folder / "file" / "below"));
}

TEST_F(Folders, HaveNoSeparatorAtTheirEnd) {
  playerx::setApplicationDataPath(text(folder / "data") + "//");
  playerx::setTempPath(text(folder / "temp") + "/");
  EXPECT_EQ(OSUtilities::getApplicationDataPath(), text(folder / "data"));
  EXPECT_EQ(OSUtilities::getTempPath(), text(folder / "temp"));
}

TEST_F(Folders, AreMadeAbsolute) {
  const fs::path before = fs::current_path();
  fs::current_path(folder.path());
  playerx::setApplicationDataPath("data");
  fs::current_path(before);
  EXPECT_EQ(OSUtilities::getApplicationDataPath(), text(folder / "data"));
}

TEST_F(Folders, NamesMayHoldAnyCharacter) {
  const QString name = text(folder / "da\xC3\xAFta \xF0\x9F\x8E\xAC");
  playerx::setApplicationDataPath(name);
  EXPECT_EQ(OSUtilities::getApplicationDataPath(), name);
  EXPECT_TRUE(fs::is_directory(name.toStdString()));
}

TEST_F(Folders, PartialFilesLieBelowTheData) {
  EXPECT_EQ(OSUtilities::getTempPath(), text(folder / "data" / "Org" / "App" / "partial"));
  playerx::setApplicationDataPath(text(folder / "mine"));
  EXPECT_EQ(OSUtilities::getTempPath(), text(folder / "mine" / "partial"));
}

TEST_F(Folders, AnEmptyOneBringsTheDefaultBack) {
  playerx::setApplicationDataPath(text(folder / "mine"));
  playerx::setTempPath(text(folder / "temp"));
  playerx::setApplicationDataPath("");
  playerx::setTempPath("");
  EXPECT_EQ(OSUtilities::getApplicationDataPath(), text(folder / "data" / "Org" / "App"));
  EXPECT_EQ(OSUtilities::getTempPath(), text(folder / "data" / "Org" / "App" / "partial"));
}

TEST_F(Folders, ManyThreadsMayAskAndSet) {
  std::vector<std::thread> threads;
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([&] {
      for (int step = 0; step < 100; ++step) {
        playerx::setApplicationDataPath(text(folder / "mine"));
        EXPECT_EQ(OSUtilities::getApplicationDataPath(), text(folder / "mine"));
        EXPECT_EQ(OSUtilities::getTempPath(), text(folder / "mine" / "partial"));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST_F(Folders, FreeSpaceIsThatOfThePlatform) {
  unsigned long long bytes = 0;
  ASSERT_TRUE(OSUtilities::getFreeSpace(text(folder / "to" / "come"), &bytes));
  const auto platform = kvpm::PathTools::getSpaceAvailable(folder.path().wstring());
  EXPECT_NEAR(static_cast<double>(bytes), static_cast<double>(platform), 1e9);
}

TEST_F(Folders, FreeSpaceThatCannotBeLearntStoresNothing) {
  unsigned long long bytes = 42;
  EXPECT_FALSE(OSUtilities::getFreeSpace(QString("/a") + QChar(0) + "b", &bytes));
  EXPECT_EQ(bytes, 42U);
}

}  // namespace
