#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "KPB/DownloadCallback.h"
#include "KPB/DownloadInfo.h"
#include "KPB/DownloadInterface.h"
#include "tests/support/WaitFor.h"
#include "tests/support/fakes/EventLog.h"

namespace support {

/// The host's download library without a network: remembers its sessions, and reports what a test
/// tells it to, on the test's thread or on one of its own (`onOwnThread`).
///
/// Log lines: "library.start URL", "library.stop UID", "library.callback set|none".
/// Owner: the test; outlives its users. Threads: any.
class FakeDownloadLibrary : public KPB::DownloadInterface {
 public:
  struct Session {
    unsigned long long uid = 0;
    std::string url;
    KPB::DownloadInfo info;
  };

  explicit FakeDownloadLibrary(EventLog& log) : log_(log), thread_([this] { work(); }) {}

  ~FakeDownloadLibrary() override {
    post(nullptr);
    thread_.join();
  }

  // What a test says.

  /// Answer of the next `startSession` calls; anything but 1 starts nothing.
  void answerStartWith(int answer) {
    set([&] { answer_ = answer; });
  }

  /// Runs inside each successful `startSession`, on its thread, with the session's id.
  void whileStarting(std::function<void(unsigned long long uid)> action) {
    set([&] { whileStarting_ = std::move(action); });
  }

  /// Runs inside each `stopSession`, on its thread.
  void whileStopping(std::function<void()> action) {
    set([&] { whileStopping_ = std::move(action); });
  }

  /// Id of the next session; later ones count on from it.
  void nextUid(unsigned long long uid) {
    set([&] { nextUid_ = uid; });
  }

  /// The session with this number, from 0 on, as soon as it was started.
  std::optional<Session> session(std::size_t number = 0) const {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, kGenerousDeadline, [&] { return sessions_.size() > number; });
    if (sessions_.size() <= number) return std::nullopt;
    return sessions_[number];
  }

  std::size_t sessionCount() const {
    const std::lock_guard lock(mutex_);
    return sessions_.size();
  }

  /// Every id given to `stopSession`, in order.
  std::vector<unsigned long long> stopped() const {
    const std::lock_guard lock(mutex_);
    return stopped_;
  }

  bool hasCallback() const {
    const std::lock_guard lock(mutex_);
    return callback_ != nullptr;
  }

  /// Runs `action` on the library's own thread, after those given earlier; returns at once.
  void onOwnThread(std::function<void()> action) { post(std::move(action)); }

  /// Waits until all actions given so far have run.
  bool waitUntilIdle() const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kGenerousDeadline, [&] { return actions_.empty() && !busy_; });
  }

  // Reports, on the calling thread; nothing happens without a registered receiver.

  void began(unsigned long long uid) {
    report([&](KPB::DownloadCallback& to) { to.httpTransferBegan(uid, {}); });
  }
  void progress(unsigned long long uid, int percent) {
    report([&](KPB::DownloadCallback& to) { to.updateProgress(uid, percent); });
  }
  void complete(unsigned long long uid) {
    report([&](KPB::DownloadCallback& to) { to.httpTransferComplete(uid); });
  }
  void broke(unsigned long long uid, int code = 1) {
    report([&](KPB::DownloadCallback& to) { to.httpTransferBroke(uid, code); });
  }
  void header(unsigned long long uid, const std::string& line) {
    report([&](KPB::DownloadCallback& to) { to.httpHeaderReceived(uid, line); });
  }

  // What the module calls.

  void setCallback(KPB::DownloadCallback* callback) override {
    log_.add(callback != nullptr ? "library.callback set" : "library.callback none");
    std::unique_lock lock(mutex_);
    callback_ = callback;
    if (callback != nullptr) return;
    changed_.wait(lock, [&] { return reportsElsewhere() == 0; });
  }

  int startSession(const std::string& urlUtf8, const KPB::DownloadInfo& info,
                   unsigned long long* uid) override {
    log_.add("library.start " + urlUtf8);
    const auto [answer, action] = open(urlUtf8, info, uid);
    if (answer == 1 && action) action(*uid);
    return answer;
  }

  void stopSession(unsigned long long uid) override {
    log_.add("library.stop " + std::to_string(uid));
    Action action;
    set([&] {
      stopped_.push_back(uid);
      action = whileStopping_;
    });
    if (action) action();
  }

 private:
  using Action = std::function<void()>;
  using StartAction = std::function<void(unsigned long long)>;

  template <class F>
  void set(F change) {
    const std::lock_guard lock(mutex_);
    change();
    changed_.notify_all();
  }

  std::pair<int, StartAction> open(const std::string& url, const KPB::DownloadInfo& info,
                                   unsigned long long* uid) {
    const std::lock_guard lock(mutex_);
    if (answer_ != 1) return {answer_, {}};
    *uid = nextUid_++;
    sessions_.push_back({*uid, url, info});
    changed_.notify_all();
    return {1, whileStarting_};
  }

  template <class F>
  void report(F call) {
    KPB::DownloadCallback* to = nullptr;
    set([&] {
      to = callback_;
      if (to != nullptr) reporting_.push_back(std::this_thread::get_id());
    });
    if (to == nullptr) return;
    call(*to);
    set([&] {
      reporting_.erase(std::find(reporting_.begin(), reporting_.end(), std::this_thread::get_id()));
    });
  }

  long reportsElsewhere() const {
    return std::count_if(reporting_.begin(), reporting_.end(),
                         [](std::thread::id id) { return id != std::this_thread::get_id(); });
  }

  void post(Action action) {
    set([&] { actions_.push_back(std::move(action)); });
  }

  void work() {
    for (;;) {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [&] { return !actions_.empty(); });
      const Action action = std::move(actions_.front());
      actions_.pop_front();
      if (!action) return;
      busy_ = true;
      lock.unlock();
      action();
      set([&] { busy_ = false; });
    }
  }

  EventLog& log_;
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  KPB::DownloadCallback* callback_ = nullptr;
  int answer_ = 1;
  StartAction whileStarting_;
  Action whileStopping_;
  unsigned long long nextUid_ = 1001;
  std::vector<Session> sessions_;
  std::vector<unsigned long long> stopped_;
  std::vector<std::thread::id> reporting_;
  std::deque<Action> actions_;
  bool busy_ = false;
  std::thread thread_;
};

}  // namespace support
