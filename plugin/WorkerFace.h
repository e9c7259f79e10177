#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "VeskPlayerX/DownloadManagerInterface.h"

namespace plugin {

/// The manager as its worker is given it: every report is handed on as it is, and `play` is told
/// apart from the host's.
///
/// When the host says `play`, the queue may be rearranged and the running transfer stopped. When
/// the worker says it, in the middle of a run, the item is flowing already and only the player has
/// to be told; no lock is needed, so nothing can wait in a circle with a stop.
///
/// Owned by the manager, on whatever threads the worker reports on.
class WorkerFace : public VeskPlayerX::DownloadManagerInterface {
  using Item = VeskPlayerX::DownloadItemInterface;
  using View = VeskPlayerX::DownloadManagerViewInterface;

 public:
  using Play = std::function<bool(unsigned int id)>;

  /// `manager` is not owned and outlives the worker.
  WorkerFace(VeskPlayerX::DownloadManagerInterface& manager, Play play)
      : manager_(manager), play_(std::move(play)) {}

  bool play(unsigned int id) override { return play_(id); }

  void setViewInterface(View* view) override { manager_.setViewInterface(view); }
  std::vector<Item*>* getCopyofQueue() override { return manager_.getCopyofQueue(); }
  void deleteCopyOfQueue(std::vector<Item*>* copy) override { manager_.deleteCopyOfQueue(copy); }
  unsigned int getNumberOfVideosInQueue() override { return manager_.getNumberOfVideosInQueue(); }
  void zpsFileOpenedForPlayback(const std::wstring& path,
                                const VeskDrmPlaybackAuthorizationResponse* response,
                                const VeskDrmTransactionRecord* record) override {
    manager_.zpsFileOpenedForPlayback(path, response, record);
  }
  Item* add(const std::wstring& url, const std::wstring& title,
            const std::wstring& providerName) override {
    return manager_.add(url, title, providerName);
  }
  std::vector<Item*> addTicket(const std::wstring& ticketPath, bool flag) override {
    return manager_.addTicket(ticketPath, flag);
  }
  bool updateStatus(unsigned int id, DownloadStatusEnumType status) override {
    return manager_.updateStatus(id, status);
  }
  bool updatePath(unsigned int id, const std::wstring& path) override {
    return manager_.updatePath(id, path);
  }
  bool updateSize(unsigned int id, unsigned long long size) override {
    return manager_.updateSize(id, size);
  }
  bool updateDownloadProgress(unsigned int id, int percent) override {
    return manager_.updateDownloadProgress(id, percent);
  }
  bool updateSlotAssignment(unsigned int id, int slot) override {
    return manager_.updateSlotAssignment(id, slot);
  }
  bool setTicketAlreadyTorn(unsigned int id) override { return manager_.setTicketAlreadyTorn(id); }
  bool setDownloadUrl(unsigned int id, std::wstring url) override {
    return manager_.setDownloadUrl(id, std::move(url));
  }
  bool setDownloadInfo(unsigned int id, KPB::DownloadInfo info) override {
    return manager_.setDownloadInfo(id, std::move(info));
  }
  bool setPlayable(unsigned int id, bool playable) override {
    return manager_.setPlayable(id, playable);
  }
  bool setTicketId(unsigned int id, long ticketId) override {
    return manager_.setTicketId(id, ticketId);
  }
  bool isPaused() override { return manager_.isPaused(); }
  void pause() override { manager_.pause(); }
  void resume() override { manager_.resume(); }
  void cancel() override { manager_.cancel(); }
  void clearCompletedDownloads() override { manager_.clearCompletedDownloads(); }
  bool remove(unsigned int id) override { return manager_.remove(id); }
  void retry(unsigned int id) override { manager_.retry(id); }
  bool moveUp(unsigned int id) override { return manager_.moveUp(id); }
  bool moveDown(unsigned int id) override { return manager_.moveDown(id); }
  void moveToTop(unsigned int id) override { manager_.moveToTop(id); }
  void moveToBottom(unsigned int id) override { manager_.moveToBottom(id); }
  void resumeDownloadingFile(const std::wstring& path) override {
    manager_.resumeDownloadingFile(path);
  }
  bool resumePlaybackForUrl(const std::wstring& url) override {
    return manager_.resumePlaybackForUrl(url);
  }
  Item* get(unsigned int id) override { return manager_.get(id); }
  Item* get(const std::wstring& url) override { return manager_.get(url); }

 private:
  VeskPlayerX::DownloadManagerInterface& manager_;
  const Play play_;
};

}  // namespace plugin
