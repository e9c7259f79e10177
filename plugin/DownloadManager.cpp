#include "plugin/DownloadManager.h"

#include <functional>
#include <type_traits>

#include "VeskPlayerX/InterfaceIds.h"
#include "download/SharedPreferences.h"
#include "plugin/DownloadManagerImpl.h"

using plugin::Intake;
using plugin::Moves;
using plugin::Playback;
using plugin::Progress;
using plugin::Scheduler;
using plugin::SharedQueue;
using plugin::TransferControl;

DownloadManager::DownloadManager(KPIM::Context* context)
    : KPIM::Plugin(context), impl_(std::make_shared<Impl>(this, kpimGetPluginContext())) {
  readFrom(std::shared_ptr<SharedQueue>(impl_, &impl_->queue));
  impl_->open();
  kpimRetain();
}

DownloadManager::~DownloadManager() {
  doShutdown();
  download::SharedPreferences::deleteUnused();
}

void DownloadManager::Shutdown() {
  const bool isRunning = impl_ != nullptr;
  doShutdown();
  if (isRunning) kpimRelease();  // the reference that the constructor took
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

template <class Part, class Operation, class... Arguments>
auto DownloadManager::forward(Part Impl::*part, Operation operation,
                              const Arguments&... arguments) {
  using Answer = std::invoke_result_t<Operation, Part&, const Arguments&...>;
  const auto impl = impl_;  // see `impl_`
  return impl ? std::invoke(operation, (*impl).*part, arguments...) : Answer();
}

void DownloadManager::setViewInterface(View* view) {
  if (const auto impl = impl_) impl->setViewInterface(view);
}

void DownloadManager::deleteCopyOfQueue(std::vector<Item*>* copy) {
  if (copy == nullptr) return;
  for (Item* const item : *copy) delete item;
  delete copy;
}

std::vector<DownloadManager::Item*>* DownloadManager::getCopyofQueue() {
  return forward(&Impl::queue, &SharedQueue::copy);
}

unsigned int DownloadManager::getNumberOfVideosInQueue() {
  return forward(&Impl::queue, &SharedQueue::size);
}

DownloadManager::Item* DownloadManager::get(unsigned int id) {
  return forward(&Impl::queue, &SharedQueue::find, id);
}

DownloadManager::Item* DownloadManager::get(const std::wstring& url) {
  return forward(&Impl::queue, &SharedQueue::findUrl, url);
}

DownloadManager::Item* DownloadManager::at(unsigned int index) {
  return forward(&Impl::queue, &SharedQueue::at, index);
}

DownloadManager::Item* DownloadManager::getByTicket(const std::string& ticket) {
  return forward(&Impl::queue, &SharedQueue::findTicket, ticket);
}

DownloadManager::Item* DownloadManager::getByPath(const std::wstring& path) {
  return forward(&Impl::queue, &SharedQueue::findPath, path);
}

DownloadManager::Item* DownloadManager::add(const std::wstring& url, const std::wstring& title,
                                            const std::wstring& providerName) {
  return forward(&Impl::intake, &Intake::add, url, title, providerName);
}

std::vector<DownloadManager::Item*> DownloadManager::addTicket(const std::wstring& ticketPath,
                                                               bool) {
  return forward(&Impl::intake, &Intake::addTicket, ticketPath);
}

void DownloadManager::zpsFileOpenedForPlayback(const std::wstring& path,
                                               const VeskDrmPlaybackAuthorizationResponse* response,
                                               const VeskDrmTransactionRecord* record) {
  forward(&Impl::intake, &Intake::zpsFileOpenedForPlayback, path, response, record);
}

bool DownloadManager::updateStatus(unsigned int id, DownloadStatusEnumType status) {
  return forward(&Impl::progress, &Progress::updateStatus, id, status);
}

bool DownloadManager::updatePath(unsigned int id, const std::wstring& path) {
  return forward(&Impl::progress, &Progress::updatePath, id, path);
}

bool DownloadManager::updateSize(unsigned int id, unsigned long long size) {
  return forward(&Impl::progress, &Progress::updateSize, id, size);
}

bool DownloadManager::updateDownloadProgress(unsigned int id, int percent) {
  return forward(&Impl::progress, &Progress::updateDownloadProgress, id, percent);
}

bool DownloadManager::updateSlotAssignment(unsigned int id, int slot) {
  return forward(&Impl::progress, &Progress::updateSlotAssignment, id, slot);
}

bool DownloadManager::setTicketAlreadyTorn(unsigned int id) {
  return forward(&Impl::progress, &Progress::setTicketAlreadyTorn, id);
}

bool DownloadManager::setDownloadUrl(unsigned int id, std::wstring url) {
  return forward(&Impl::progress, &Progress::setDownloadUrl, id, url);
}

bool DownloadManager::setDownloadInfo(unsigned int id, KPB::DownloadInfo info) {
  return forward(&Impl::progress, &Progress::setDownloadInfo, id, info);
}

bool DownloadManager::setPlayable(unsigned int id, bool playable) {
  return forward(&Impl::progress, &Progress::setPlayable, id, playable);
}

bool DownloadManager::setTicketId(unsigned int id, long ticketId) {
  return forward(&Impl::progress, &Progress::setTicketId, id, ticketId);
}

bool DownloadManager::isPaused() { return forward(&Impl::transfers, &TransferControl::isPaused); }

void DownloadManager::pause() { forward(&Impl::transfers, &TransferControl::pause); }

void DownloadManager::resume() { forward(&Impl::transfers, &TransferControl::resume); }

void DownloadManager::cancel() { forward(&Impl::transfers, &TransferControl::cancel); }

void DownloadManager::retry(unsigned int id) { forward(&Impl::scheduler, &Scheduler::retry, id); }

bool DownloadManager::play(unsigned int id) {
  return forward(&Impl::playback, &Playback::play, id);
}

bool DownloadManager::resumePlaybackForUrl(const std::wstring& url) {
  return forward(&Impl::playback, &Playback::resumePlaybackForUrl, url);
}

bool DownloadManager::moveUp(unsigned int id) { return forward(&Impl::moves, &Moves::moveUp, id); }

bool DownloadManager::moveDown(unsigned int id) {
  return forward(&Impl::moves, &Moves::moveDown, id);
}

void DownloadManager::moveToTop(unsigned int id) { forward(&Impl::moves, &Moves::moveToTop, id); }

void DownloadManager::moveToBottom(unsigned int id) {
  forward(&Impl::moves, &Moves::moveToBottom, id);
}

void DownloadManager::resumeDownloadingFile(const std::wstring& path) {
  forward(&Impl::moves, &Moves::resumeDownloadingFile, path);
}

bool DownloadManager::remove(unsigned int id) { return forward(&Impl::moves, &Moves::remove, id); }

void DownloadManager::clearCompletedDownloads() {
  forward(&Impl::moves, &Moves::clearCompletedDownloads);
}
