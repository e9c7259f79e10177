#include "tests/unit/transfers/Receiver.h"

#include <gtest/gtest.h>

#include "tests/support/WaitFor.h"

namespace playerx::transfers {

void Receiver::httpTransferBegan(unsigned long long uid,
                                 const std::basic_string<unsigned char>& signature) {
  EXPECT_TRUE(signature.empty());
  note(uid, "began", [](Reported& reported) { EXPECT_TRUE(reported.events.empty()); });
}

void Receiver::updateProgress(unsigned long long uid, int percent) {
  note(uid, "percent " + std::to_string(percent), [&](Reported& reported) {
    EXPECT_TRUE(percent >= 0 && percent <= 100) << percent;
    EXPECT_FALSE(reported.events.empty()) << "not begun";
    EXPECT_TRUE(reported.percents.empty() || reported.percents.back() != percent) << percent;
    reported.percents.push_back(percent);
  });
}

void Receiver::httpTransferComplete(unsigned long long uid) {
  note(uid, "complete", [](Reported& reported) {
    EXPECT_FALSE(reported.events.empty()) << "not begun";
    reported.complete = true;
  });
}

void Receiver::httpTransferBroke(unsigned long long uid, int code) {
  note(uid, "broke " + std::to_string(code), [&](Reported& reported) { reported.broke = code; });
}

void Receiver::httpHeaderReceived(unsigned long long uid, const std::string& line) {
  std::function<void(const std::string&)> action;
  {
    const std::lock_guard lock(mutex_);
    EXPECT_FALSE(sessions_[uid].isOver());
    sessions_[uid].headers.push_back(line);
    action = action_;
  }
  changed_.notify_all();
  if (action) action("header");
}

void Receiver::note(unsigned long long uid, const std::string& event,
                    const std::function<void(Reported&)>& change) {
  std::function<void(const std::string&)> action;
  {
    const std::lock_guard lock(mutex_);
    Reported& reported = sessions_[uid];
    EXPECT_FALSE(reported.isOver()) << event << " after the end";
    change(reported);
    reported.events.push_back(event);
    action = action_;
  }
  changed_.notify_all();
  if (action) action(event);
}

Reported Receiver::of(unsigned long long uid) const {
  const std::lock_guard lock(mutex_);
  const auto found = sessions_.find(uid);
  return found == sessions_.end() ? Reported{} : found->second;
}

bool Receiver::waitUntil(unsigned long long uid,
                         const std::function<bool(const Reported&)>& wanted) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, support::kGenerousDeadline,
                           [&] { return wanted(sessions_[uid]); });
}

bool Receiver::waitForEnd(unsigned long long uid) {
  return waitUntil(uid, [](const Reported& reported) { return reported.isOver(); });
}

bool Receiver::waitForPercent(unsigned long long uid, int atLeast) {
  return waitUntil(uid, [&](const Reported& reported) {
    return !reported.percents.empty() && reported.percents.back() >= atLeast;
  });
}

void Receiver::clear() {
  const std::lock_guard lock(mutex_);
  sessions_.clear();
}

void Receiver::during(std::function<void(const std::string&)> action) {
  const std::lock_guard lock(mutex_);
  action_ = std::move(action);
}

}  // namespace playerx::transfers
