#include "download/HttpDownloadThreadImpl.h"

#include "download/Placement.h"

using Impl = HttpDownloadThread::HttpDownloadThreadImpl;

Impl::HttpDownloadThreadImpl(HttpDownloadThread& owner, KPIM::Context* context)
    : owner_(owner), host_(context), authorisation_(host_, state_), playThread_(state_) {}

Impl::~HttpDownloadThreadImpl() {
  close();
  state_.waitForEnd();  // of a run that came after an earlier close
}

DownloadStatusEnumType Impl::downloadVideo(Item* item) {
  state_.begin();
  const DownloadStatusEnumType outcome = [&] {
    const kvpm::CritLock run(runLock_);
    runItem(item);
    closeGate();
    // Without an item there was nothing that could have been stopped.
    return item != nullptr ? state_.status() : DownloadStatusFailed;
  }();
  state_.end();  // the last word: a thread that waited for it may delete the worker
  return outcome;
}

void Impl::runItem(Item* item) {
  try {
    std::shared_ptr<Item> next(item);
    currentItem_ = item;
    item_ = std::move(next);
    takeSteps();
  } catch (...) {  // out of memory, at worst: the item has failed, the queue goes on
    state_.reach(DownloadStatusFailed);
    if (sessionUid_ != 0) stopDownload(std::exchange(sessionUid_, 0));
  }
}

bool Impl::loadLibrary() {
  if (library_ == nullptr) {
    library_ = host_.load<KPB::DownloadInterface>(KPB::DIN_Download);
    if (library_ == nullptr) return false;
    currentLibrary_ = library_->get();
  }
  library_->get()->setCallback(this);
  return true;
}

void Impl::stop() {
  state_.askToStop();
  endRun();
  state_.stopDone();
}

/// Waits for a run that was asked to stop, also one that has yet to take the run lock.
void Impl::endRun() {
  if (reportingThread_ == std::this_thread::get_id()) {
    stopItemSession();  // the run cannot end before this very report does
    return;
  }
  state_.waitForEnd();
  const kvpm::CritLock run(runLock_);
  stopItemSession();
  if (item_ != nullptr && item_->getUID() == sessionUid_) sessionUid_ = 0;
  if (closed_) releaseSession(nullptr);  // there is no next run to do it
}

void Impl::stopItemSession() {
  if (library_ != nullptr && item_ != nullptr) stopDownload(item_->getUID());
}

void Impl::stopDownload(unsigned long long uid) {
  if (KPB::DownloadInterface* const library = currentLibrary_) library->stopSession(uid);
}

void Impl::close() {
  if (closed_.exchange(true)) return;
  state_.askToStop();  // for good: a closed worker runs nothing any more
  endRun();
  // Without the callback mutex: this waits for a report that may hold it.
  if (KPB::DownloadInterface* const library = currentLibrary_) library->setCallback(nullptr);
  playThread_.finish();
  authorisation_.finish();
}

std::wstring Impl::getLocalFilePath(const std::string& url) { return download::localFilePath(url); }
