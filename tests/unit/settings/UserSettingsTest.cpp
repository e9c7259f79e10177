#include "playerx/settings/UserSettings.h"
#include "tests/unit/settings/SettingsFixture.h"

namespace {

using playerx::ensureUserSettings;

class UserSettings : public settings_test::SettingsFixture {};

TEST_F(UserSettings, ThereAreNoneUntilSomebodyCreatesThem) {
  EXPECT_EQ(KPXPreferences::userSettings, nullptr);
}

TEST_F(UserSettings, AreCreatedAsAgreed) {
  const QSettings& settings = ensureUserSettings();
  EXPECT_EQ(&settings, KPXPreferences::userSettings);
  EXPECT_EQ(settings.scope(), QSettings::UserScope);
  EXPECT_EQ(settings.organizationName(), "Org");
  EXPECT_EQ(settings.applicationName(), "Settings");
  EXPECT_EQ(settings.group(), "App");
  EXPECT_EQ(settings.fileName(), text(folder / "config" / "Org" / "Settings.conf"));
}

TEST_F(UserSettings, AreCreatedOnce) {
  const QSettings* first = &ensureUserSettings();
  EXPECT_EQ(&ensureUserSettings(), first);
}

TEST_F(UserSettings, ThoseThatAreThereAreKept) {
  auto* theirs = new QSettings(text(folder / "theirs.ini"), QSettings::IniFormat);
  KPXPreferences::userSettings = theirs;
  EXPECT_EQ(&ensureUserSettings(), theirs);
  EXPECT_EQ(theirs->group(), "");
}

TEST_F(UserSettings, AreCreatedAnewAfterTheyWereDeleted) {
  ensureUserSettings().setValue("key", "kept");
  deleteSettings();
  EXPECT_EQ(ensureUserSettings().value("key").toString(), "kept");
}

}  // namespace
