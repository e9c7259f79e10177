#include "playerx/settings/PreferenceOverrides.h"
#include "tests/unit/settings/SettingsFixture.h"

namespace {

using playerx::preferenceOverride;
using playerx::setPreferenceOverride;

class PreferenceOverrides : public settings_test::SettingsFixture {};

TEST_F(PreferenceOverrides, ThereAreNoneAtFirst) {
  EXPECT_EQ(preferenceOverride("key"), std::nullopt);
}

TEST_F(PreferenceOverrides, HoldForTheirKey) {
  setPreferenceOverride("key", "value");
  EXPECT_EQ(preferenceOverride("key"), "value");
  EXPECT_EQ(preferenceOverride("Key"), std::nullopt);
}

TEST_F(PreferenceOverrides, TheLastOneCounts) {
  setPreferenceOverride("key", "first");
  setPreferenceOverride("key", "second");
  EXPECT_EQ(preferenceOverride("key"), "second");
}

TEST_F(PreferenceOverrides, AnEmptyOneIsNone) {
  setPreferenceOverride("key", "value");
  setPreferenceOverride("key", "");
  EXPECT_EQ(preferenceOverride("key"), std::nullopt);
}

TEST_F(PreferenceOverrides, AllCanBeTakenBack) {
  setPreferenceOverride("a", "1");
  setPreferenceOverride("b", "2");
  playerx::clearPreferenceOverrides();
  EXPECT_EQ(preferenceOverride("a"), std::nullopt);
  EXPECT_EQ(preferenceOverride("b"), std::nullopt);
}

}  // namespace
