#include "download/SideThread.h"

#include <utility>

#include "download/BackgroundThread.h"
#include "download/RunState.h"

namespace download {

SideThread::~SideThread() { finish(); }

bool SideThread::run(std::function<void()> call) {
  const auto idle = [this] { return !busy_; };
  if (!run_.waitUnlessStopped(idle) || run_.isStopping()) return false;
  return start(std::move(call)) && run_.waitUnlessStopped(idle);
}

bool SideThread::start(std::function<void()> call) {
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
  const BackgroundThread mark;
  try {
    call_();
  } catch (...) {  // the caller finds no answer
  }
  call_ = nullptr;
  busy_ = false;
  run_.wake();
}

}  // namespace download
