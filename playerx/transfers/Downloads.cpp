#include "playerx/transfers/Downloads.h"

#include <utility>

#include "KPB/DownloadInfo.h"
#include "playerx/transfers/Checksum.h"
#include "playerx/transfers/FileNames.h"
#include "playerx/transfers/Placement.h"

namespace playerx::transfers {
namespace {

constexpr int kStarted = 1;
constexpr int kRefused = 0;

DownloadRequest requestOf(const KPB::DownloadInfo& info) {
  DownloadRequest request;
  request.rights = info.getSTRDChunk();
  request.rightsManaged =
      !request.rights.empty() || !info.getTempUsername().empty() || !info.getTempPassword().empty();
  request.name = info.getOutputFilename();
  request.movies = info.getMoviesDirectory();
  request.downloads = info.getDownloadDirectory();
  return request;
}

}  // namespace

Downloads::Downloads(const Tuning& tuning)
    : environmentTrust_(authoritiesOfProcess()), engine_(tuning, delivery_, environmentTrust_) {}

Downloads::~Downloads() { delivery_.setCallback(nullptr); }

void Downloads::setCallback(KPB::DownloadCallback* callback) { delivery_.setCallback(callback); }

int Downloads::startSession(const std::string& urlUtf8, const KPB::DownloadInfo& info,
                            unsigned long long* uid) {
  DownloadRequest request = requestOf(info);
  const std::optional<Address> address = parseAddress(urlUtf8);
  request.address = address.value_or(Address{{}, urlUtf8, {}});
  if (!address) return refuse(std::move(request), TransferFailure::kUnsupportedAddress);
  const auto name = cleanOutputName(request.name, request.rights.empty() ? "" : kRightsSuffix);
  if (!name) return refuse(std::move(request), TransferFailure::kBadName);
  request.name = *name;
  request.options = optionsOf(*address);
  if (request.rightsManaged) {
    request.options.username = info.getTempUsername();
    request.options.password = info.getTempPassword();
  }
  if (request.movies.empty()) return refuse(std::move(request), TransferFailure::kMediaFolder);
  if (request.downloads.empty()) return refuse(std::move(request), TransferFailure::kTempFolder);
  const auto session = std::make_shared<Session>(++lastUid_, std::move(request));
  *uid = session->uid;
  book_.add(session);
  engine_.start(session);
  return kStarted;
}

int Downloads::refuse(DownloadRequest request, TransferFailure failure) {
  const auto session = std::make_shared<Session>(0, std::move(request));
  session->log.broke(failure, {});
  book_.add(session);
  return kRefused;
}

void Downloads::stopSession(unsigned long long uid) {
  const std::shared_ptr<Session> session = book_.find(uid);
  if (!session || session->stopped.exchange(true)) return;
  engine_.stop(session);
}

void Downloads::setTrustFile(const std::string& pathUtf8) {
  engine_.setTrust(pathUtf8.empty() ? environmentTrust_ : TrustedAuthorities{pathUtf8, {}});
}

void Downloads::setRateLimit(std::uint64_t bytesPerSecond) { engine_.setRateLimit(bytesPerSecond); }

bool Downloads::setFilmOptions(const std::string& urlUtf8, const FilmOptions& options) {
  const std::optional<Address> address = parseAddress(urlUtf8);
  const std::optional<std::string> sum = normalSum(options.sha256);
  if (!address || (!options.sha256.empty() && !sum)) return false;
  const GuardLock lock(mutex_);
  if (options == FilmOptions{}) {
    options_.erase(address->remembered);
  } else {
    FilmOptions& kept = options_[address->remembered] = options;
    kept.sha256 = sum.value_or("");
  }
  return true;
}

FilmOptions Downloads::optionsOf(const Address& address) {
  const GuardLock lock(mutex_);
  const auto found = options_.find(address.remembered);
  return found == options_.end() ? FilmOptions() : found->second;
}

bool Downloads::takeBack(const std::string& filmUtf8, const std::string& downloadFolderUtf8) {
  return transfers::takeBack(filmUtf8, downloadFolderUtf8);
}

bool Downloads::takeBackFilmOf(const std::string& urlUtf8, const std::string& moviesFolderUtf8,
                               const std::string& downloadFolderUtf8) {
  const std::optional<Address> address = parseAddress(urlUtf8);
  return address && transfers::takeBackFilmOf(*address, moviesFolderUtf8, downloadFolderUtf8);
}

FilmRecovery& Downloads::recovery() {
  engine_.awaitConfirmations();
  return *this;
}

void Downloads::confirm(const std::string& urlUtf8) {
  TransferReport report;
  if (!book_.findByAddress(urlUtf8, &report) || report.phase != TransferPhase::kComplete) return;
  if (const auto session = book_.find(report.uid)) engine_.confirm(session);
}

}  // namespace playerx::transfers
