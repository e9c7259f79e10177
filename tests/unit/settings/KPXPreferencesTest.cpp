#include <QStringList>
#include <atomic>
#include <thread>
#include <vector>

#include "KPX/KPXPreferences.h"
#include "playerx/settings/UserSettings.h"
#include "tests/unit/settings/SettingsFixture.h"

namespace {

using playerx::ensureUserSettings;

QString preference(const QString& key, const QString& defaultValue = "default") {
  return KPXPreferences::getPreferenceHelper<QString>(key, defaultValue, false);
}

class Preferences : public settings_test::SettingsFixture {};

TEST_F(Preferences, TheMediaFolderHasItsKey) {
  EXPECT_EQ(KPXPreferences::MediaFolder, "General/MediaFolder");
}

TEST_F(Preferences, TheDefaultMediaFolderIsAnAbsolutePath) {
  const QString folder = KPXPreferences::MediaFolder_DEFAULT;
  EXPECT_TRUE(folder.startsWith('/'));
  EXPECT_TRUE(folder.endsWith("/Vesk"));
  EXPECT_FALSE(folder.contains('\\'));
}

TEST_F(Preferences, WithoutSettingsTheDefaultHolds) {
  ASSERT_EQ(KPXPreferences::userSettings, nullptr);
  EXPECT_EQ(preference("General/MediaFolder"), "default");
}

TEST_F(Preferences, AStoredValueHolds) {
  ensureUserSettings().setValue("General/MediaFolder", QStringLiteral(u"/media/\u0444ilms, old"));
  EXPECT_EQ(preference("General/MediaFolder"), QStringLiteral(u"/media/\u0444ilms, old"));
}

TEST_F(Preferences, AStoredValueHoldsInTheNextRunToo) {
  ensureUserSettings().setValue("General/MediaFolder", "/media");
  deleteSettings();
  ensureUserSettings();
  EXPECT_EQ(preference("General/MediaFolder"), "/media");
}

TEST_F(Preferences, AValueThatIsNotStoredGivesTheDefault) {
  ensureUserSettings().setValue("General/Other", "other");
  EXPECT_EQ(preference("General/MediaFolder"), "default");
  EXPECT_EQ(preference("General/MediaFolder", ""), "");
}

TEST_F(Preferences, AnEmptyValueGivesTheDefault) {
  ensureUserSettings().setValue("General/MediaFolder", "");
  EXPECT_EQ(preference("General/MediaFolder"), "default");
}

TEST_F(Preferences, AValueThatIsNoTextGivesTheDefault) {
  ensureUserSettings().setValue("list", QStringList{"a", "b"});
  ensureUserSettings().setValue("nothing", QVariant());
  EXPECT_EQ(preference("list"), "default");
  EXPECT_EQ(preference("nothing"), "default");
}

TEST_F(Preferences, OtherValuesAreConverted) {
  ensureUserSettings().setValue("number", 42);
  ensureUserSettings().setValue("truth", true);
  EXPECT_EQ(preference("number"), "42");
  EXPECT_EQ(preference("truth"), "true");
}

TEST_F(Preferences, TheThirdArgumentHasNoEffect) {
  ensureUserSettings().setValue("key", "value");
  EXPECT_EQ(KPXPreferences::getPreferenceHelper<QString>("key", "default", true), "value");
  EXPECT_EQ(KPXPreferences::getPreferenceHelper<QString>("other", "default", true), "default");
}

TEST_F(Preferences, AreReadAfterTheSettingsWereDeleted) {
  ensureUserSettings().setValue("key", "value");
  deleteSettings();
  EXPECT_EQ(preference("key"), "default");
}

TEST_F(Preferences, AnOverrideWinsOverTheStoredValue) {
  ensureUserSettings().setValue("General/MediaFolder", "/stored");
  playerx::setPreferenceOverride(KPXPreferences::MediaFolder, "/given");
  EXPECT_EQ(preference("General/MediaFolder"), "/given");
  playerx::clearPreferenceOverrides();
  EXPECT_EQ(preference("General/MediaFolder"), "/stored");
}

TEST_F(Preferences, AnOverrideHoldsWithoutSettings) {
  playerx::setPreferenceOverride("key", "given");
  EXPECT_EQ(preference("key"), "given");
}

TEST_F(Preferences, AnOverrideIsNeverWritten) {
  ensureUserSettings().setValue("key", "stored");
  playerx::setPreferenceOverride("key", "given");
  EXPECT_EQ(preference("key"), "given");
  const QString file = KPXPreferences::userSettings->fileName();
  deleteSettings();
  const std::string written = support::readFile(file.toStdString());
  EXPECT_NE(written.find("stored"), std::string::npos);
  EXPECT_EQ(written.find("given"), std::string::npos);
}

TEST_F(Preferences, ManyThreadsMayRead) {
  ensureUserSettings().setValue("key", "value");
  std::atomic<int> right{0};
  std::vector<std::thread> threads;
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([&] {
      for (int step = 0; step < 250; ++step) {
        if (preference("key") == "value") ++right;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(right, 1000);
}

}  // namespace
