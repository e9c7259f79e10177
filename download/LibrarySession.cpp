#include "download/LibrarySession.h"

#include <utility>

#include "VeskPlayerX/InterfaceIds.h"

namespace download {
namespace {

constexpr int kSessionStarted = 1;

}  // namespace

bool LibrarySession::load(KPB::DownloadCallback& callback) {
  if (helper_ == nullptr) {
    helper_ = host_.load<KPB::DownloadInterface>(KPB::DIN_Download);
    if (helper_ == nullptr) return false;
    library_ = helper_->get();
  }
  helper_->get()->setCallback(&callback);
  return true;
}

std::optional<unsigned long long> LibrarySession::start(const std::string& url,
                                                        const KPB::DownloadInfo& info) {
  unsigned long long uid = 0;
  if (helper_->get()->startSession(url, info, &uid) != kSessionStarted) return std::nullopt;
  uid_ = uid;
  return uid;
}

void LibrarySession::release(VeskPlayerX::PlayerInterface* player) {
  const unsigned long long uid = std::exchange(uid_, 0);
  if (uid == 0) return;
  if (player == nullptr || player->currentMediaId() != uid) stop(uid);
}

void LibrarySession::releaseLast() {
  if (uid_ == 0) return;
  const auto player = host_.load<VeskPlayerX::PlayerInterface>(VeskPlayerX::DIN_Player);
  release(player != nullptr ? player->get() : nullptr);
}

void LibrarySession::end(unsigned long long uid) {
  stop(uid);
  if (uid_ == uid) uid_ = 0;
}

void LibrarySession::stop(unsigned long long uid) {
  try {
    if (KPB::DownloadInterface* const library = library_) library->stopSession(uid);
  } catch (...) {  // out of memory, at worst: whoever stops a session goes on without it
  }
}

void LibrarySession::unregister() {
  if (KPB::DownloadInterface* const library = library_) library->setCallback(nullptr);
}

}  // namespace download
