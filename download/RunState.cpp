#include "download/RunState.h"

namespace download {

void RunState::prepare() {
  const kvpm::MutexLock lock(mutex_);
  announce();
}

void RunState::begin() {
  const kvpm::MutexLock lock(mutex_);
  if (!announced_) announce();
}

void RunState::announce() {
  announced_ = true;
  stopping_ = stops_ > 0;
  status_ = stopping_ ? DownloadStatusStopped : DownloadStatusDownloading;
  if (stopping_) {
    cancelToken_.cancel();
  } else {
    cancelToken_.reset();
  }
}

void RunState::end() {
  const kvpm::MutexLock lock(mutex_);
  announced_ = false;
  cancelToken_.reset();
}

DownloadStatusEnumType RunState::status() const {
  const kvpm::MutexLock lock(mutex_);
  return status_;
}

bool RunState::reach(DownloadStatusEnumType outcome) {
  const kvpm::MutexLock lock(mutex_);
  if (status_ != DownloadStatusDownloading) return false;
  status_ = outcome;
  changed_.notify_all();
  return true;
}

void RunState::askToStop() {
  const kvpm::MutexLock lock(mutex_);
  ++stops_;
  if (!announced_) return;
  stopping_ = true;
  if (status_ == DownloadStatusDownloading) status_ = DownloadStatusStopped;
  cancelToken_.cancel();
  changed_.notify_all();
}

void RunState::stopDone() {
  const kvpm::MutexLock lock(mutex_);
  --stops_;
}

bool RunState::isStopping() const {
  const kvpm::MutexLock lock(mutex_);
  return stopping_;
}

void RunState::waitForOutcome() {
  const kvpm::MutexLock lock(mutex_);
  while (status_ == DownloadStatusDownloading) changed_.wait_for(mutex_, kInterval);
}

void RunState::wake() {
  const kvpm::MutexLock lock(mutex_);
  changed_.notify_all();
}

}  // namespace download
