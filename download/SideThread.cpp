#include "download/SideThread.h"

#include <utility>

namespace download {

SideThread::SideThread(std::function<void()> onEnded) : onEnded_(std::move(onEnded)) {}

SideThread::~SideThread() { finish(); }

bool SideThread::start(std::function<void()> call) {
  if (busy_) return false;
  thread_ = std::make_unique<kvpm::Thread>(static_cast<kvpm::IRunnable*>(this));
  call_ = std::move(call);
  busy_ = true;
  if (thread_->start()) return true;
  call_ = nullptr;
  busy_ = false;
  return false;
}

void SideThread::finish() { thread_.reset(); }

void SideThread::runThread(kvpm::Thread*) {
  try {
    call_();
  } catch (...) {  // whoever waits finds no result
  }
  call_ = nullptr;
  busy_ = false;
  onEnded_();
}

}  // namespace download
