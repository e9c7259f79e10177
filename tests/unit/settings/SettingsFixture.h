#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QSettings>
#include <QString>
#include <cstdlib>
#include <optional>
#include <string>

#include "KPX/KPXPreferences.h"
#include "playerx/settings/Folders.h"
#include "playerx/settings/PreferenceOverrides.h"
#include "tests/support/TempDir.h"

namespace settings_test {

/// Sets a variable of the environment for as long as it lives.
class Variable {
 public:
  Variable(const char* name, const std::string& value) : name_(name) {
    if (const char* before = std::getenv(name)) before_ = before;
    ::setenv(name, value.c_str(), 1);
  }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;
  ~Variable() {
    if (before_) {
      ::setenv(name_.c_str(), before_->c_str(), 1);
    } else {
      ::unsetenv(name_.c_str());
    }
  }

 private:
  std::string name_;
  std::optional<std::string> before_;
};

/// An application of its own names, whose settings and data lie in a folder of the test's.
class SettingsFixture : public testing::Test {
 protected:
  SettingsFixture() {
    QCoreApplication::setOrganizationName("Org");
    QCoreApplication::setApplicationName("App");
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, text(folder / "config"));
  }
  ~SettingsFixture() override {
    deleteSettings();
    playerx::clearPreferenceOverrides();
    playerx::setApplicationDataPath({});
    playerx::setTempPath({});
  }

  static QString text(const std::filesystem::path& path) {
    return QString::fromStdString(path.string());
  }

  // As the download manager does when it is destroyed.
  static void deleteSettings() {
    delete KPXPreferences::userSettings;
    KPXPreferences::userSettings = nullptr;
  }

  support::TempDir folder;
  Variable dataHome{"XDG_DATA_HOME", (folder / "data").string()};
};

}  // namespace settings_test
