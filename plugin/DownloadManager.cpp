#include "plugin/DownloadManager.h"

#include "VeskPlayerX/InterfaceIds.h"
#include "VeskPlayerX/VeskDrm.h"
#include "download/SharedPreferences.h"
#include "plugin/DownloadManagerImpl.h"

DownloadManager::DownloadManager(KPIM::Context* context)
    : KPIM::Plugin(context),
      impl_(std::make_shared<DownloadManagerImpl>(this, kpimGetPluginContext())) {
  impl_->open();
  kpimRetain();
}

DownloadManager::~DownloadManager() {
  doShutdown();
  download::SharedPreferences::deleteUnused();
}

void DownloadManager::Shutdown() {
  const bool holdsItself = impl_ != nullptr;
  doShutdown();
  if (holdsItself) kpimRelease();
}

void DownloadManager::doShutdown() {
  // Other threads use the pointer until they have ended.
  if (impl_) impl_->close();
  impl_.reset();
}

KPIM::VESK_RESULT DownloadManager::kpimGetInterface(std::string id, void** out) {
  if (id == VeskPlayerX::DIN_DownloadManager) {
    *out = static_cast<VeskPlayerX::DownloadManagerInterface*>(this);
  } else if (id == VeskPlayerX::DIN_Shutdown) {
    *out = static_cast<VeskPlayerX::ShutdownInterface*>(this);
  } else {
    return KPIM::kUnknownInterface;
  }
  return KPIM::kSuccess;
}

// Each operation below holds on to the state that it works on: see `impl_`.

void DownloadManager::setViewInterface(View* view) {
  if (const auto impl = impl_) impl->setViewInterface(view);
}

std::vector<DownloadManager::Item*>* DownloadManager::getCopyofQueue() {
  const auto impl = impl_;
  return impl ? impl->getCopyofQueue() : nullptr;
}

void DownloadManager::deleteCopyOfQueue(std::vector<Item*>* copy) {
  if (copy == nullptr) return;
  for (Item* const item : *copy) delete item;
  delete copy;
}

unsigned int DownloadManager::getNumberOfVideosInQueue() {
  const auto impl = impl_;
  return impl ? impl->getNumberOfVideosInQueue() : 0;
}

void DownloadManager::zpsFileOpenedForPlayback(const std::wstring& path,
                                               const VeskDrmPlaybackAuthorizationResponse* response,
                                               const VeskDrmTransactionRecord* record) {
  const auto impl = impl_;
  if (impl && response != nullptr) impl->zpsFileOpenedForPlayback(path, *response, record);
}

DownloadManager::Item* DownloadManager::add(const std::wstring& url, const std::wstring& title,
                                            const std::wstring& providerName) {
  const auto impl = impl_;
  return impl ? impl->add(url, title, providerName) : nullptr;
}

std::vector<DownloadManager::Item*> DownloadManager::addTicket(const std::wstring& ticketPath,
                                                               bool) {
  const auto impl = impl_;
  return impl ? impl->addTicket(ticketPath) : std::vector<Item*>{};
}

bool DownloadManager::updateStatus(unsigned int id, DownloadStatusEnumType status) {
  const auto impl = impl_;
  return impl && impl->updateStatus(id, status);
}

bool DownloadManager::updatePath(unsigned int id, const std::wstring& path) {
  const auto impl = impl_;
  return impl && impl->updatePath(id, path);
}

bool DownloadManager::updateSize(unsigned int id, unsigned long long size) {
  const auto impl = impl_;
  return impl && impl->updateSize(id, size);
}

bool DownloadManager::updateDownloadProgress(unsigned int id, int percent) {
  const auto impl = impl_;
  return impl && impl->updateDownloadProgress(id, percent);
}

bool DownloadManager::updateSlotAssignment(unsigned int id, int slot) {
  const auto impl = impl_;
  return impl && impl->updateSlotAssignment(id, slot);
}

bool DownloadManager::setTicketAlreadyTorn(unsigned int id) {
  const auto impl = impl_;
  return impl && impl->setTicketAlreadyTorn(id);
}

bool DownloadManager::setDownloadUrl(unsigned int id, std::wstring url) {
  const auto impl = impl_;
  return impl && impl->setDownloadUrl(id, url);
}

bool DownloadManager::setDownloadInfo(unsigned int id, KPB::DownloadInfo info) {
  const auto impl = impl_;
  return impl && impl->setDownloadInfo(id, info);
}

bool DownloadManager::setPlayable(unsigned int id, bool playable) {
  const auto impl = impl_;
  return impl && impl->setPlayable(id, playable);
}

bool DownloadManager::setTicketId(unsigned int id, long ticketId) {
  const auto impl = impl_;
  return impl && impl->setTicketId(id, ticketId);
}

bool DownloadManager::isPaused() {
  const auto impl = impl_;
  return impl && impl->isPaused();
}

void DownloadManager::pause() {
  if (const auto impl = impl_) impl->pauseByHost();
}

void DownloadManager::resume() {
  if (const auto impl = impl_) impl->resumeByHost();
}

void DownloadManager::cancel() {
  if (const auto impl = impl_) impl->cancelByHost();
}

void DownloadManager::clearCompletedDownloads() {
  if (const auto impl = impl_) impl->clearCompletedDownloads();
}

bool DownloadManager::remove(unsigned int id) {
  const auto impl = impl_;
  return impl && impl->remove(id);
}

void DownloadManager::retry(unsigned int id) {
  if (const auto impl = impl_) impl->retry(id);
}

bool DownloadManager::play(unsigned int id) {
  const auto impl = impl_;
  return impl && impl->play(id);
}

bool DownloadManager::moveUp(unsigned int id) {
  const auto impl = impl_;
  return impl && impl->moveUp(id);
}

bool DownloadManager::moveDown(unsigned int id) {
  const auto impl = impl_;
  return impl && impl->moveDown(id);
}

void DownloadManager::moveToTop(unsigned int id) {
  if (const auto impl = impl_) impl->moveToTop(id);
}

void DownloadManager::moveToBottom(unsigned int id) {
  if (const auto impl = impl_) impl->moveToBottom(id);
}

void DownloadManager::resumeDownloadingFile(const std::wstring& path) {
  if (const auto impl = impl_) impl->resumeDownloadingFile(path);
}

bool DownloadManager::resumePlaybackForUrl(const std::wstring& url) {
  const auto impl = impl_;
  return impl && impl->resumePlaybackForUrl(url);
}

DownloadManager::Item* DownloadManager::get(unsigned int id) {
  const auto impl = impl_;
  return impl ? impl->get(id) : nullptr;
}

DownloadManager::Item* DownloadManager::get(const std::wstring& url) {
  const auto impl = impl_;
  return impl ? impl->get(url) : nullptr;
}

DownloadManager::Item* DownloadManager::at(unsigned int index) {
  const auto impl = impl_;
  return impl ? impl->at(index) : nullptr;
}

DownloadManager::Item* DownloadManager::getByTicket(const std::string& ticket) {
  const auto impl = impl_;
  return impl ? impl->getByTicket(ticket) : nullptr;
}

DownloadManager::Item* DownloadManager::getByPath(const std::wstring& path) {
  const auto impl = impl_;
  return impl ? impl->getByPath(path) : nullptr;
}
