#include "playerx/app/session/Places.h"

#include <pwd.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <cstdlib>
#include <utility>

#include "KPX/KPXPreferences.h"
#include "KPX/OSUtilities.h"
#include "playerx/platform/MoviesFolder.h"
#include "playerx/platform/NativePath.h"
#include "playerx/platform/Text.h"
#include "playerx/settings/Folders.h"
#include "playerx/settings/PreferenceKeys.h"
#include "playerx/settings/PreferenceOverrides.h"
#include "playerx/settings/UserSettings.h"

namespace playerx::session {

namespace {

QString absolute(const std::string& path) {
  return QDir::cleanPath(QDir::current().absoluteFilePath(QString::fromStdString(path)));
}

void overrideWith(const QString& key, const QString& value) {
  if (!value.isEmpty()) setPreferenceOverride(key, value);
}

/// What of `path` comes next below its folder `existing`.
std::filesystem::path firstMissing(std::filesystem::path path,
                                   const std::filesystem::path& existing) {
  while (path.parent_path() != existing) path = path.parent_path();
  return path;
}

bool isSet(const char* text) { return text != nullptr && *text != '\0'; }

}  // namespace

Places setUpPlaces(const SessionOptions& options) {
  ensureUserSettings();
  if (!options.dataFolder.empty()) setApplicationDataPath(absolute(options.dataFolder));
  if (!options.mediaFolder.empty()) {
    overrideWith(KPXPreferences::MediaFolder, absolute(options.mediaFolder));
  }
  if (!options.caFile.empty()) overrideWith(kCaFileKey, absolute(options.caFile));
  overrideWith(kServicesAddressKey, QString::fromStdString(options.services));
  overrideWith(kPlayerKey, QString::fromStdString(options.player));

  // Named anew because the default was computed when the program was loaded, before `setHome`.
  const QString media = KPXPreferences::getPreferenceHelper<QString>(
      KPXPreferences::MediaFolder, QString::fromStdWString(defaultMoviesFolder()), true);
  overrideWith(KPXPreferences::MediaFolder, media);
  setMoviesFolder(media.toStdWString());
  return {VeskPlayerX::OSUtilities::getApplicationDataPath().toStdString(), media.toStdString()};
}

std::vector<std::filesystem::path> pluginFolders(const SessionOptions& options) {
  if (!options.pluginFolder.empty()) return {options.pluginFolder};
  const QString beside = QCoreApplication::applicationDirPath();
  return {QDir::cleanPath(beside + "/../lib/plugins").toStdString(),
          QDir::cleanPath(beside + "/../lib/playerx/plugins").toStdString()};
}

std::optional<std::string> homeFolder(const char* variable, const char* ofAccount) {
  if (isSet(variable)) return variable;
  // The accounts of services name "/", where films cannot be kept.
  if (isSet(ofAccount) && std::string(ofAccount) != "/") return ofAccount;
  return std::nullopt;
}

bool setHome() {
  const passwd* const account = getpwuid(geteuid());
  const char* const variable = std::getenv("HOME");
  const auto home = homeFolder(variable, account != nullptr ? account->pw_dir : nullptr);
  if (home && !isSet(variable)) setenv("HOME", home->c_str(), 1);
  return home.has_value();
}

std::string missingHomeProblem(const SessionOptions& options, const char* dataHome) {
  std::string missing;
  if (options.dataFolder.empty() && !isSet(dataHome)) missing = "--data";
  if (options.mediaFolder.empty()) missing += missing.empty() ? "--media" : " and --media";
  if (missing.empty()) return {};
  return "There is no home folder: HOME is not set, and the account has none; name the folders "
         "with " +
         missing + ".";
}

std::string folderProblem(const SessionOptions& options) {
  namespace fs = std::filesystem;
  const std::pair<const char*, std::string> named[] = {{"--data", options.dataFolder},
                                                       {"--media", options.mediaFolder}};
  for (const auto& [option, name] : named) {
    if (!decodeUtf8(name).malformed) continue;
    return std::string(option) + " cannot be " + name + ": the name is not text in UTF-8.";
  }
  if (options.dataFolder.empty()) return {};
  const fs::path folder = absolute(options.dataFolder).toStdString();
  std::error_code error;
  const fs::path existing = nearestExisting(folder);
  if (!fs::is_directory(existing, error)) {
    return "--data cannot be " + folder.string() + ": " + existing.string() + " is not a folder.";
  }
  if (existing == folder) return {};
  if (const fs::path link = firstMissing(folder, existing); fs::is_symlink(link, error)) {
    return "--data cannot be " + folder.string() + ": " + link.string() +
           " is a link that leads nowhere.";
  }
  if (access(existing.c_str(), W_OK | X_OK) == 0) return {};
  return "--data cannot be " + folder.string() + ": no folder can be made in " + existing.string() +
         ".";
}

}  // namespace playerx::session
