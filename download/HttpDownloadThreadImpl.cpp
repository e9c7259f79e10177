#include "download/HttpDownloadThreadImpl.h"

#include "download/Placement.h"

using Impl = HttpDownloadThread::HttpDownloadThreadImpl;
using download::LibraryReport;

Impl::HttpDownloadThreadImpl(KPIM::Context* context)
    : host_(context),
      session_(host_),
      authorisation_(host_, state_),
      playback_(host_, state_),
      reports_(host_, state_, playback_) {}

Impl::~HttpDownloadThreadImpl() {
  close();
  state_.waitForEnd();  // of a run that came after an earlier close
}

DownloadStatusEnumType Impl::downloadVideo(Item* item) {
  state_.begin();
  const DownloadStatusEnumType outcome = [&] {
    const kvpm::CritLock run(runLock_);
    runItem(item);
    reports_.close();
    // Without an item there was nothing that could have been stopped.
    return item != nullptr ? state_.status() : DownloadStatusFailed;
  }();
  state_.end();  // the last word: a thread that waited for it may delete the worker
  return outcome;
}

void Impl::runItem(Item* item) {
  try {
    currentItem_ = item;
    unshared_.reset(item);
    item_ = std::move(unshared_);  // which keeps it if there is no memory to share it
    takeSteps();
  } catch (...) {  // out of memory, at worst: the item has failed, the queue goes on
    state_.reach(DownloadStatusFailed);
    session_.release(nullptr);
  }
}

void Impl::stop() {
  state_.askToStop();
  endRun();
  state_.stopDone();
}

/// Waits for a run that was asked to stop, also one that has yet to take the run lock.
void Impl::endRun() {
  if (reports_.isReporting()) {
    if (item_ != nullptr) session_.stop(item_->getUID());
    return;  // the run cannot end before this very report does
  }
  state_.waitForEnd();
  const kvpm::CritLock run(runLock_);
  if (item_ != nullptr) session_.end(item_->getUID());
  if (closed_) session_.release(nullptr);  // there is no next run to do it
}

void Impl::stopDownload(unsigned long long uid) { session_.stop(uid); }

void Impl::close() {
  if (closed_.exchange(true)) return;
  state_.askToStop();  // for good: a closed worker runs nothing any more
  endRun();
  session_.unregister();  // without the callback mutex, which a report that is running holds
  playback_.finish();
  authorisation_.finish();
}

std::wstring Impl::getLocalFilePath(const std::string& url) { return download::localFilePath(url); }

void Impl::httpTransferBegan(unsigned long long, const std::basic_string<unsigned char>&) {
  reports_.passTurn();
}

void Impl::httpHeaderReceived(unsigned long long, const std::string&) { reports_.passTurn(); }

void Impl::updateProgress(unsigned long long uid, int percent) {
  reports_.receive({LibraryReport::Kind::kProgress, uid, percent});
}

void Impl::httpTransferComplete(unsigned long long uid) {
  reports_.receive({LibraryReport::Kind::kComplete, uid, 0});
}

void Impl::httpTransferBroke(unsigned long long uid, int) {
  reports_.receive({LibraryReport::Kind::kBroken, uid, 0});
}
