#include "playerx/window/queue/SlotDesk.h"

#include <utility>

namespace playerx::window {

namespace {

constexpr int kDeclined = -1;

}  // namespace

SlotDesk::SlotDesk(std::function<void(const SlotQuestion&)> ask) : ask_(std::move(ask)) {}

int SlotDesk::choose(const std::string& title) {
  int number = 0;
  {
    const GuardLock lock(mutex_);
    if (isClosed_) return kDeclined;
    number = ++last_;
  }
  ask_({number, QString::fromStdString(title)});
  const GuardLock lock(mutex_);
  while (!isClosed_ && !answers_.contains(number)) answered_.wait(mutex_);
  const auto answer = answers_.extract(number);
  return answer.empty() ? kDeclined : answer.mapped();
}

void SlotDesk::answer(int question, int slot) {
  {
    const GuardLock lock(mutex_);
    answers_.emplace(question, slot);
  }
  answered_.notifyAll();
}

void SlotDesk::close() {
  {
    const GuardLock lock(mutex_);
    isClosed_ = true;
  }
  answered_.notifyAll();
}

}  // namespace playerx::window
