#include "playerx/app/session/PlayerSession.h"

#include <QTemporaryDir>
#include <algorithm>
#include <utility>

#include "KPX/OSUtilities.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "kvpm/StringTools.h"
#include "playerx/app/model/ItemState.h"
#include "playerx/app/reasons/ReasonFile.h"
#include "playerx/app/session/Resources.h"
#include "playerx/platform/ThreadGate.h"
#include "playerx/settings/Folders.h"
#include "playerx/settings/TrustedAuthorities.h"
#include "playerx/transfers/TransferSettings.h"

namespace playerx::session {

using VeskPlayerX::DownloadManagerInterface;

namespace {

std::string namesOf(const std::vector<std::filesystem::path>& folders) {
  std::string names;
  for (const std::filesystem::path& folder : folders) {
    names += (names.empty() ? "" : " or ") + folder.string();
  }
  return names;
}

}  // namespace

PlayerSession::PlayerSession(const SessionOptions& options, SessionListener listener)
    : places_(setUpPlaces(options)),
      end_(std::move(listener.isToEnd)),
      messages_(listener.wake),
      view_(listener.wake, std::move(listener.askForSlot)),
      plugins_(pluginFolders(options)),
      searchedFolders_(namesOf(pluginFolders(options))) {
  end_.offerTo(plugins_);
  messages_.offerTo(plugins_);
}

PlayerSession::~PlayerSession() { close(); }

std::string PlayerSession::open(Access access) {
  const bool isLook = access == Access::kLook;
  std::string problem = lackOfResources(isLook ? kThreadsToLook : kThreadsToDownload);
  if (problem.empty()) problem = isLook ? openCopy() : openForChange(access);
  if (!problem.empty() && !isTaken_) close();
  return problem;
}

std::string PlayerSession::openForChange(Access access) {
  lock_ = std::make_unique<DataFolderLock>(places_.data);
  isTaken_ = lock_->isTaken();
  if (!lock_->problem().empty()) return lock_->problem();
  saved_ = std::make_unique<SavedQueue>(places_.data);
  std::string problem = saved_->readProblem();
  if (problem.empty() && access == Access::kChange) problem = saved_->writeProblem();
  saved_->keepToOwner();
  if (problem.empty() && access == Access::kChange) saved_->reserveRoom();
  if (problem.empty()) problem = loadManager();
  if (!problem.empty()) return problem;
  filmOptions_ = std::make_unique<FilmOptionsFile>(places_.data);
  const std::string folder = places_.data + "/";
  for (const std::string& sentence :
       problemsOf({folder + FilmOptionsFile::kFileName, folder + reasons::ReasonFile::kFileName})) {
    messages_.tellUser(sentence);
  }
  for (const std::string& file : saved_->filesSetAside()) {
    messages_.tellUser("The queue could not be read; it was set aside as " + file + ".");
  }
  return {};
}

/// The manager converts the queue of an earlier release and sets one aside that it cannot read:
/// here it does so to a copy.
std::string PlayerSession::openCopy() {
  const SavedQueue original(places_.data);
  const QTemporaryDir folder;
  if (!folder.isValid()) return "The queue cannot be copied: " + folder.errorString().toStdString();
  std::string problem = original.copyTo(folder.path().toStdString());
  if (!problem.empty()) return problem;
  saved_ = std::make_unique<SavedQueue>(folder.path().toStdString());
  setApplicationDataPath(folder.path());
  problem = loadManager();
  if (manager_) manager().setViewInterface(nullptr);
  setApplicationDataPath(QString::fromStdString(places_.data));
  return saved_->filesSetAside().empty() ? problem : original.contentProblem();
}

void PlayerSession::start() {
  settings_ = KPIM::load<TransferSettings>(&plugins_, DIN_TransferSettings);
  const std::string trusted = trustedAuthorities().file;
  if (settings_ && !trusted.empty()) settings_->get()->setTrustFile(trusted);
  pruneFilmOptions();
  for (const auto& [address, options] : filmOptions_->all()) {
    if (settings_) settings_->get()->setFilmOptions(address, options);
  }
  recovery_ = KPIM::load<FilmRecovery>(&plugins_, DIN_FilmRecovery);
  takeFilmsBack([](DownloadStatusEnumType status) { return status != DownloadStatusCompleted; });
  transfers_ = KPIM::load<TransferReports>(&plugins_, DIN_TransferReports);
  ThreadGate::open();
  isStarted_ = true;
}

void PlayerSession::pause() {
  manager().pause();
  takeFilmsBack([](DownloadStatusEnumType status) { return status == DownloadStatusPaused; });
}

// The manager would give a film of which it knows nothing another name, because its own is taken.
void PlayerSession::takeFilmsBack(const std::function<bool(DownloadStatusEnumType)>& isToTakeBack) {
  if (!recovery_) return;
  const std::string folder = VeskPlayerX::OSUtilities::getTempPath().toStdString();
  for (const VeskPlayerX::QueuedVersion& each : reader().getVersions()) {
    if (!isToTakeBack(each.status)) continue;
    const std::unique_ptr<VeskPlayerX::DownloadItemInterface> item(reader().getCopy(each.id));
    if (item == nullptr) continue;
    const std::string path = kvpm::StringTools::wStringToString(item->getPath());
    if (path.empty()) {
      const std::string address = kvpm::StringTools::wStringToString(item->getUrl());
      recovery_->get()->takeBackFilmOf(address, places_.media, folder);
    } else {
      recovery_->get()->takeBack(path, folder);
    }
  }
}

void PlayerSession::takeFilmBack(const std::string& address) {
  const std::string folder = VeskPlayerX::OSUtilities::getTempPath().toStdString();
  if (recovery_) recovery_->get()->takeBackFilmOf(address, places_.media, folder);
}

void PlayerSession::confirmFilm(const std::string& address) const {
  if (recovery_) recovery_->get()->confirm(address);
}

void PlayerSession::addFilmOptions(const std::string& address, const FilmOptions& options) {
  const FilmOptions all = filmOptions_->add(address, options);
  if (settings_) settings_->get()->setFilmOptions(address, all);
}

void PlayerSession::forgetFilmOptions(const std::string& address) {
  filmOptions_->forget(address);
  if (settings_) settings_->get()->setFilmOptions(address, {});
}

void PlayerSession::pruneFilmOptions() {
  if (!filmOptions_ || filmOptions_->all().empty()) return;
  for (const std::string& address : filmOptions_->prune(model::snapshotOf(manager()))) {
    if (settings_) settings_->get()->setFilmOptions(address, {});
  }
}

void PlayerSession::setRateLimit(std::uint64_t bytesPerSecond) {
  if (settings_) settings_->get()->setRateLimit(bytesPerSecond);
}

std::optional<TransferReport> PlayerSession::findTransfer(const std::string& address) const {
  TransferReport report;
  if (!transfers_ || !transfers_->get()->findByAddress(address, &report)) return std::nullopt;
  return report;
}

std::string PlayerSession::loadManager() {
  saved_->setAsideEmptyFile();
  // The scheduler starts with the manager and would begin to download at once.
  ThreadGate::close();
  manager_ = KPIM::load<DownloadManagerInterface>(&plugins_, VeskPlayerX::DIN_DownloadManager);
  if (manager_) reader_ = dynamic_cast<VeskPlayerX::QueueReaderInterface*>(manager_->get());
  if (reader_ != nullptr) {
    view_.attach(manager(), reader());
    manager().setViewInterface(&view_);
    saved_->setRefusedFileAside(manager());
    return saved_->loadProblem(manager());
  }
  std::string problem = "The download manager cannot be loaded from " + searchedFolders_ + ".";
  for (const std::string& each : plugins_.problems()) problem += " " + each;
  return problem;
}

/// Lets the manager finish what it records of the last film: its item sinks to the end of the queue
/// after it is called complete, and without a view that is not saved. There is nothing to cancel,
/// but `cancel` waits for the end of a transfer and for its record.
void PlayerSession::awaitRecord() {
  if (!isStarted_) return;
  const std::vector<VeskPlayerX::QueuedVersion> items = reader().getVersions();
  const bool isWorkLeft = std::any_of(items.begin(), items.end(), [](const auto& item) {
    return model::isUnfinished(item.status);
  });
  if (!isWorkLeft) manager().cancel();
}

void PlayerSession::close() {
  end_.begin();
  if (manager_) pruneFilmOptions();
  if (filmOptions_) saved_->noteAllTold();
  if (manager_) awaitRecord();
  if (manager_) manager().setViewInterface(nullptr);
  transfers_.reset();
  settings_.reset();
  recovery_.reset();
  manager_.reset();
  plugins_.shutdown();
  ThreadGate::open();
  lock_.reset();
}

}  // namespace playerx::session
