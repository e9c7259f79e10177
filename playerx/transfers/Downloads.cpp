#include "playerx/transfers/Downloads.h"

#include <utility>

#include "KPB/DownloadInfo.h"
#include "playerx/transfers/FileNames.h"

namespace playerx::transfers {
namespace {

constexpr int kStarted = 1;
constexpr int kRefused = 0;
constexpr char kRightsSuffix[] = ".rights";

Wish wishOf(const KPB::DownloadInfo& info) {
  Wish wish;
  wish.username = info.getTempUsername();
  wish.password = info.getTempPassword();
  wish.rights = info.getSTRDChunk();
  wish.rightsManaged = !wish.rights.empty() || !wish.username.empty() || !wish.password.empty();
  wish.name = info.getOutputFilename();
  wish.movies = info.getMoviesDirectory();
  wish.downloads = info.getDownloadDirectory();
  return wish;
}

}  // namespace

Downloads::Downloads(const Tuning& tuning)
    : environmentTrust_(authoritiesOfProcess()), engine_(tuning, delivery_, environmentTrust_) {}

Downloads::~Downloads() { delivery_.setCallback(nullptr); }

void Downloads::setCallback(KPB::DownloadCallback* callback) { delivery_.setCallback(callback); }

int Downloads::startSession(const std::string& urlUtf8, const KPB::DownloadInfo& info,
                            unsigned long long* uid) {
  Wish wish = wishOf(info);
  const std::optional<Address> address = parseAddress(urlUtf8);
  wish.address = address.value_or(Address{{}, urlUtf8, {}});
  if (!address) return refuse(std::move(wish), TransferFailure::kUnsupportedAddress);
  const auto name = cleanOutputName(wish.name, wish.rights.empty() ? "" : kRightsSuffix);
  if (!name) return refuse(std::move(wish), TransferFailure::kBadName);
  wish.name = *name;
  if (wish.movies.empty()) return refuse(std::move(wish), TransferFailure::kMediaFolder);
  if (wish.downloads.empty()) return refuse(std::move(wish), TransferFailure::kTempFolder);
  const auto session = std::make_shared<Session>(++lastUid_, std::move(wish));
  *uid = session->uid;
  book_.add(session);
  engine_.start(session);
  return kStarted;
}

int Downloads::refuse(Wish wish, TransferFailure failure) {
  const auto session = std::make_shared<Session>(0, std::move(wish));
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

}  // namespace playerx::transfers
