#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "VeskPlayerX/DownloadManagerInterface.h"
#include "tests/support/fakes/EventLog.h"

namespace support {

/// The manager as its worker sees it: writes down what is reported. It holds no queue.
///
/// Log lines: "manager.OPERATION ARGUMENTS", texts as UTF-8, flags as true or false.
/// Owner: the test; outlives its users. Threads: any.
class FakeManager : public VeskPlayerX::DownloadManagerInterface {
  using Item = VeskPlayerX::DownloadItemInterface;

 public:
  explicit FakeManager(EventLog& log) : log_(log) {}

  /// Answer of every `play`.
  void answerPlay(bool answer) { playAnswer_ = answer; }

  /// Runs inside each call, after its line was written; gets that line.
  void onEvent(std::function<void(const std::string& line)> action) {
    const std::lock_guard lock(mutex_);
    action_ = std::move(action);
  }

  /// The record that `setDownloadInfo` brought last for this id.
  KPB::DownloadInfo downloadInfo(unsigned int id) const {
    const std::lock_guard lock(mutex_);
    const auto found = infos_.find(id);
    return found == infos_.end() ? KPB::DownloadInfo() : found->second;
  }

  bool updateStatus(unsigned int id, DownloadStatusEnumType status) override {
    return event("updateStatus", id, std::to_string(static_cast<int>(status)));
  }
  bool updatePath(unsigned int id, const std::wstring& path) override {
    return event("updatePath", id, narrow(path));
  }
  bool updateSize(unsigned int id, unsigned long long size) override {
    return event("updateSize", id, std::to_string(size));
  }
  bool updateDownloadProgress(unsigned int id, int percent) override {
    return event("updateDownloadProgress", id, std::to_string(percent));
  }
  bool updateSlotAssignment(unsigned int id, int slot) override {
    return event("updateSlotAssignment", id, std::to_string(slot));
  }
  bool setTicketAlreadyTorn(unsigned int id) override { return event("setTicketAlreadyTorn", id); }
  bool setDownloadUrl(unsigned int id, std::wstring url) override {
    return event("setDownloadUrl", id, narrow(url));
  }
  bool setDownloadInfo(unsigned int id, KPB::DownloadInfo info) override {
    {
      const std::lock_guard lock(mutex_);
      infos_[id] = std::move(info);
    }
    return event("setDownloadInfo", id);
  }
  bool setPlayable(unsigned int id, bool playable) override {
    return event("setPlayable", id, playable ? "true" : "false");
  }
  bool setTicketId(unsigned int id, long ticketId) override {
    return event("setTicketId", id, std::to_string(ticketId));
  }
  bool play(unsigned int id) override {
    event("play", id);
    return playAnswer_;
  }

  // Not the worker's business: written down, answered with nothing.
  void setViewInterface(VeskPlayerX::DownloadManagerViewInterface*) override {
    event("setViewInterface");
  }
  std::vector<Item*>* getCopyofQueue() override { return new std::vector<Item*>(); }
  void deleteCopyOfQueue(std::vector<Item*>* copy) override { delete copy; }
  unsigned int getNumberOfVideosInQueue() override { return 0; }
  void zpsFileOpenedForPlayback(const std::wstring& path,
                                const VeskDrmPlaybackAuthorizationResponse*,
                                const VeskDrmTransactionRecord*) override {
    event("zpsFileOpenedForPlayback " + narrow(path));
  }
  Item* add(const std::wstring& url, const std::wstring&, const std::wstring&) override {
    event("add " + narrow(url));
    return nullptr;
  }
  std::vector<Item*> addTicket(const std::wstring& ticketPath, bool) override {
    event("addTicket " + narrow(ticketPath));
    return {};
  }
  bool isPaused() override { return false; }
  void pause() override { event("pause"); }
  void resume() override { event("resume"); }
  void cancel() override { event("cancel"); }
  void clearCompletedDownloads() override { event("clearCompletedDownloads"); }
  bool remove(unsigned int id) override { return event("remove", id); }
  void retry(unsigned int id) override { event("retry", id); }
  bool moveUp(unsigned int id) override { return !event("moveUp", id); }
  bool moveDown(unsigned int id) override { return !event("moveDown", id); }
  void moveToTop(unsigned int id) override { event("moveToTop", id); }
  void moveToBottom(unsigned int id) override { event("moveToBottom", id); }
  void resumeDownloadingFile(const std::wstring& path) override {
    event("resumeDownloadingFile " + narrow(path));
  }
  bool resumePlaybackForUrl(const std::wstring& url) override {
    event("resumePlaybackForUrl " + narrow(url));
    return false;
  }
  Item* get(unsigned int) override { return nullptr; }
  Item* get(const std::wstring&) override { return nullptr; }

 private:
  void event(const std::string& text) {
    const std::string line = "manager." + text;
    log_.add(line);
    std::function<void(const std::string&)> action;
    {
      const std::lock_guard lock(mutex_);
      action = action_;
    }
    if (action) action(line);
  }

  bool event(const std::string& operation, unsigned int id, const std::string& argument = "") {
    event(operation + " " + std::to_string(id) + (argument.empty() ? "" : " " + argument));
    return true;
  }

  EventLog& log_;
  std::atomic<bool> playAnswer_{false};
  mutable std::mutex mutex_;
  std::map<unsigned int, KPB::DownloadInfo> infos_;
  std::function<void(const std::string&)> action_;
};

}  // namespace support
