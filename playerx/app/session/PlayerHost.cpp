#include "playerx/app/session/PlayerHost.h"

#include <QCoreApplication>
#include <QDir>

#include "KPX/KPXPreferences.h"
#include "KPX/OSUtilities.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "kvpm/PathTools.h"
#include "playerx/cli/Options.h"
#include "playerx/platform/MoviesFolder.h"
#include "playerx/settings/Folders.h"
#include "playerx/settings/PreferenceKeys.h"
#include "playerx/settings/PreferenceOverrides.h"
#include "playerx/settings/UserSettings.h"

namespace playerx {

namespace {

QString absolute(const std::string& path) {
  return QDir::cleanPath(QDir::current().absoluteFilePath(QString::fromStdString(path)));
}

void overrideWith(const QString& key, const QString& value) {
  if (!value.isEmpty()) setPreferenceOverride(key, value);
}

std::vector<std::filesystem::path> pluginFolders(const Options& options) {
  if (!options.pluginFolder.empty()) return {options.pluginFolder};
  const QString beside = QCoreApplication::applicationDirPath();
  return {QDir::cleanPath(beside + "/../lib/plugins").toStdString(),
          QDir::cleanPath(beside + "/../lib/playerx/plugins").toStdString()};
}

/// Offers the front end's messages to the plug-ins.
class MessagesPlugin : public KPIM::Plugin {
 public:
  MessagesPlugin(KPIM::Context* context, UserMessages& messages)
      : KPIM::Plugin(context), messages_(messages) {}

  KPIM::VESK_RESULT kpimGetInterface(std::string id, void** out) override {
    if (id != kUserMessagesId) return KPIM::kUnknownInterface;
    *out = &messages_;
    return KPIM::kSuccess;
  }

 private:
  UserMessages& messages_;
};

}  // namespace

Places setUpPlaces(const Options& options) {
  ensureUserSettings();
  if (!options.dataFolder.empty()) setApplicationDataPath(absolute(options.dataFolder));
  if (!options.mediaFolder.empty()) {
    overrideWith(KPXPreferences::MediaFolder, absolute(options.mediaFolder));
  }
  if (!options.caFile.empty()) overrideWith(kCaFileKey, absolute(options.caFile));
  overrideWith(kServicesAddressKey, QString::fromStdString(options.services));
  overrideWith(kPlayerKey, QString::fromStdString(options.player));

  // The usual folder was noted when the program was loaded; the home folder is settled later.
  const QString media = KPXPreferences::getPreferenceHelper<QString>(
      KPXPreferences::MediaFolder, QString::fromStdWString(defaultMoviesFolder()), true);
  overrideWith(KPXPreferences::MediaFolder, media);
  setMoviesFolder(media.toStdWString());
  return {VeskPlayerX::OSUtilities::getApplicationDataPath().toStdString(), media.toStdString()};
}

PlayerHost::PlayerHost(const Options& options, UserMessages& messages)
    : context_(pluginFolders(options)) {
  context_.add({"com.vesk.playerX.plugin.Messages", "1.0", {kUserMessagesId}},
               [&messages](KPIM::Context* context, void** out) {
                 *out = static_cast<KPIM::Plugin*>(new MessagesPlugin(context, messages));
                 return KPIM::kSuccess;
               });
}

PlayerHost::~PlayerHost() {
  manager_.reset();
  context_.shutdown();
}

std::string PlayerHost::loadManager() {
  const char* id = VeskPlayerX::DIN_DownloadManager;
  manager_ = std::make_unique<KPIM::Helper<VeskPlayerX::DownloadManagerInterface>>(id);
  const KPIM::Context::PluginInterfaceFilter filter(id);
  const KPIM::Context::SimplePluginInfoSelector selector;
  if (manager_->loadPlugin(&context_, filter, selector, true) == KPIM::kSuccess) return {};
  std::string sentence = "The download manager cannot be loaded.";
  for (const std::string& problem : context_.problems()) sentence += " " + problem;
  return sentence;
}

}  // namespace playerx
