#include "download/HttpDownloadThreadImpl.h"

#include "download/LocalFilePlacement.h"
#include "kvpm/PathTools.h"

using Impl = HttpDownloadThread::HttpDownloadThreadImpl;

Impl::HttpDownloadThreadImpl(HttpDownloadThread& owner, KPIM::Context* context)
    : context_(context),
      owner_(owner),
      talks_([this] { state_.wake(); }),
      plays_([this] { state_.wake(); }) {}

Impl::~HttpDownloadThreadImpl() {
  close();
  state_.waitForEnd();  // of a run that came after an earlier close
}

DownloadStatusEnumType Impl::downloadVideo(Item* item) {
  state_.begin();
  const DownloadStatusEnumType outcome = runLocked(item);
  state_.end();  // the last word: whoever waited for it may delete the worker
  return outcome;
}

DownloadStatusEnumType Impl::runLocked(Item* item) {
  const kvpm::CritLock run(runLock_);
  takeOver(item);
  try {
    runItem();
  } catch (...) {  // out of memory, at worst: the item has failed, the queue goes on
    state_.reach(DownloadStatusFailed);
    if (openUid_ != 0) stopDownload(openUid_);
  }
  closeSession();
  // Nothing cannot be stopped either.
  return item_ != nullptr ? state_.status() : DownloadStatusFailed;
}

void Impl::takeOver(Item* item) {
  presentItem_ = item;
  item_.reset(item);
  totalSize_ = 0;
  openUid_ = 0;
}

bool Impl::loadLibrary() {
  if (library_ == nullptr) {
    library_ = load<KPB::DownloadInterface>(KPB::DIN_Download);
    if (library_ == nullptr) return false;
    presentLibrary_ = library_->get();
  }
  library_->get()->setCallback(this);
  return true;
}

void Impl::setInterfaces(Manager* manager, download::AttachedView::View* view) {
  manager_ = manager;
  view_.attach(view);
}

void Impl::stop() {
  state_.askToStop();
  endRun();
  state_.stopDone();
}

/// Waits for a run that was asked to stop, also one that has yet to take the run lock.
void Impl::endRun() {
  if (reporting_ == std::this_thread::get_id()) {
    stopPresentSession();  // the run cannot end before this very report does
    return;
  }
  state_.waitForEnd();
  const kvpm::CritLock run(runLock_);
  stopPresentSession();
}

void Impl::stopPresentSession() {
  if (library_ != nullptr && item_ != nullptr) stopDownload(item_->getUID());
}

void Impl::stopDownload(unsigned long long uid) {
  if (KPB::DownloadInterface* const library = presentLibrary_) library->stopSession(uid);
}

void Impl::close() {
  if (closed_.exchange(true)) return;
  state_.askToStop();  // for good: a closed worker runs nothing any more
  endRun();
  // Without the callback mutex: this waits for a report that may hold it.
  if (KPB::DownloadInterface* const library = presentLibrary_) library->setCallback(nullptr);
  plays_.finish();
  talks_.finish();
}

std::wstring Impl::getLocalFilePath(const std::string& url) {
  return download::freePathIn(download::mediaFolderPrefix(), download::mediaFileName(url),
                              &kvpm::PathTools::fileExists);
}
