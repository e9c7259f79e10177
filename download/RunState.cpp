#include "download/RunState.h"

#include <algorithm>

namespace download {

void RunState::prepare() {
  const kvpm::MutexLock lock(mutex_);
  announce();
}

void RunState::begin() {
  const kvpm::MutexLock lock(mutex_);
  inside_.push_back(std::this_thread::get_id());
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
  inside_.erase(std::find(inside_.begin(), inside_.end(), std::this_thread::get_id()));
  changed_.notify_all();
}

bool RunState::isInsideRun() const {
  return std::count(inside_.begin(), inside_.end(), std::this_thread::get_id()) != 0;
}

void RunState::waitForEnd() const {
  const kvpm::MutexLock lock(mutex_);
  if (isInsideRun()) return;
  while (!inside_.empty()) changed_.wait_for(mutex_, kInterval);
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
