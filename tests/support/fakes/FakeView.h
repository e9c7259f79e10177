#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <utility>

#include "VeskPlayerX/DownloadManagerViewInterface.h"
#include "tests/support/fakes/EventLog.h"

namespace support {

/// The host's view of the queue: writes down what it is told, answers what a test has chosen.
///
/// Log lines: "view.listChanged", "view.itemChanged ID", "view.itemsAdded", "view.keepsRunning",
/// "view.chooseSlot TITLE CODE", "view.authorizationError CODE", "view.notEnoughSpace PATH",
/// "view.urlFailed URL", "view.broken PATH", "view.refresh ID".
/// Owner: the test; outlives its users. Threads: any.
class FakeView : public VeskPlayerX::DownloadManagerViewInterface {
 public:
  explicit FakeView(EventLog& log) : log_(log) {}

  void answerKeepsRunning(bool answer) { keepsRunning_ = answer; }
  void answerSlot(int slot) { slot_ = slot; }

  /// Runs inside each call, after its line was written; gets that line.
  void onEvent(std::function<void(const std::string& line)> action) {
    const std::lock_guard lock(mutex_);
    action_ = std::move(action);
  }

  void downloadListChanged() override { event("view.listChanged"); }
  void downloadItemChanged(unsigned int id) override {
    event("view.itemChanged " + std::to_string(id));
  }
  void downloadItemsAdded() override { event("view.itemsAdded"); }
  bool keepsRunningWhenFinished() override {
    event("view.keepsRunning");
    return keepsRunning_;
  }
  int chooseSlot(const std::wstring& title, const VeskDrmDownloadAuthorization& answer) override {
    event("view.chooseSlot " + narrow(title) + " " + std::to_string(answer.errorCode));
    return slot_;
  }
  void showAuthorizationError(const VeskDrmDownloadAuthorization& answer) override {
    event("view.authorizationError " + std::to_string(answer.errorCode));
  }
  void notEnoughSpace(const std::wstring& path) override {
    event("view.notEnoughSpace " + narrow(path));
  }
  void downloadUrlFailed(const std::wstring& url) override {
    event("view.urlFailed " + narrow(url));
  }
  void downloadBroken(const std::wstring& path) override { event("view.broken " + narrow(path)); }
  void refreshItem(unsigned int id) override { event("view.refresh " + std::to_string(id)); }

 private:
  void event(const std::string& line) {
    log_.add(line);
    std::function<void(const std::string&)> action;
    {
      const std::lock_guard lock(mutex_);
      action = action_;
    }
    if (action) action(line);
  }

  EventLog& log_;
  std::atomic<bool> keepsRunning_{true};
  std::atomic<int> slot_{-1};
  std::mutex mutex_;
  std::function<void(const std::string&)> action_;
};

}  // namespace support
