#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "VeskPlayerX/DownloadManagerViewInterface.h"
#include "VeskPlayerX/QueueReaderInterface.h"
#include "item/DownloadItem.h"
#include "playerx/app/session/PlayerSession.h"
#include "playerx/transfers/FilmRecovery.h"
#include "playerx/transfers/TransferReports.h"
#include "tests/support/fakes/FakeContext.h"
#include "tests/support/fakes/FakeManager.h"

namespace playerx {

/// A download manager that downloads nothing: a test writes its queue, step by step, and sees in
/// the log what it was asked to do. One thread, that of the test.
class FakeModule : public support::FakeManager, public VeskPlayerX::QueueReaderInterface {
 public:
  using Item = VeskPlayerX::DownloadItemInterface;

  explicit FakeModule(support::EventLog& log) : FakeManager(log) {}

  /// Offers the manager to the plug-ins of a session; it outlives the session.
  void offerTo(session::PlayerSession& session);

  /// Puts an item at the end; stays with the queue.
  DownloadItem& put(const std::string& url, DownloadStatusEnumType status = DownloadStatusQueued);

  /// Takes the item at this index out.
  void drop(std::size_t index) { items_.erase(items_.begin() + std::ptrdiff_t(index)); }

  /// Moves the item at this index to the end.
  void moveToEnd(std::size_t index) {
    const auto item = items_.begin() + std::ptrdiff_t(index);
    std::rotate(item, item + 1, items_.end());
  }

  /// The queue's own items, in order.
  const std::vector<std::unique_ptr<DownloadItem>>& all() const { return items_; }

  /// Carried out one at each later look at the queue, after which the view is told.
  void atNextLooks(std::vector<std::function<void()>> steps) { steps_ = std::move(steps); }

  /// Carried out at each look at the queue; the view is not told.
  void atEachLook(std::function<void()> step) { eachLook_ = std::move(step); }

  /// Carried out once, before the next copy of one item is made.
  void atNextCopy(std::function<void()> step) { nextCopy_ = std::move(step); }

  /// The ids of the items of which a copy was asked for.
  std::vector<unsigned int> copied;

  bool isPausedNow = false;
  bool isPaused() override { return isPausedNow; }

  VeskPlayerX::DownloadManagerViewInterface* view() const { return view_; }

  /// Whether the view was there at the last cancelling.
  bool hadViewAtCancel = false;
  void cancel() override {
    FakeManager::cancel();
    hadViewAtCancel = view_ != nullptr;
  }

  /// Takes addresses that end in .avi, and tickets when `takesTickets` is set.
  bool takesTickets = false;
  Item* add(const std::wstring& url, const std::wstring& title, const std::wstring&) override;
  std::vector<Item*> addTicket(const std::wstring& ticketPath, bool) override;

  void setViewInterface(VeskPlayerX::DownloadManagerViewInterface* view) override;
  std::vector<Item*>* getCopyofQueue() override;
  void deleteCopyOfQueue(std::vector<Item*>* copy) override;
  std::vector<VeskPlayerX::QueuedVersion> getVersions() override;
  Item* getCopy(unsigned int id) override;
  unsigned int getNumberOfVideosInQueue() override { return unsigned(items_.size()); }

 private:
  void takeStep();

  VeskPlayerX::DownloadManagerViewInterface* view_ = nullptr;
  std::vector<std::unique_ptr<DownloadItem>> items_;
  std::vector<std::function<void()>> steps_;
  std::function<void()> eachLook_;
  std::function<void()> nextCopy_;
};

/// Offers `face`, not owned, to the plug-ins of `context` under `id`.
template <class I>
void offer(PluginContext& context, const std::string& id, I* face) {
  context.add({"test." + id, "1.0", {id}}, [id, face](KPIM::Context* owner, void** out) {
    *out = static_cast<KPIM::Plugin*>(new support::FakePlugin(owner, id, face));
    return KPIM::kSuccess;
  });
}

/// A download library of which only the reports are asked.
class FakeReports : public TransferReports {
 public:
  TransferReport last;
  bool isThere = false;

  bool findByAddress(const std::string&, TransferReport* report) const override;
  bool findByPath(const std::string&, TransferReport* report) const override;
};

/// A download library of which only the films of the queue are asked for.
class FakeRecovery : public FilmRecovery {
 public:
  std::vector<std::string> confirmed;
  std::vector<std::string> takenBack;

  bool takeBack(const std::string& film, const std::string&) override {
    takenBack.push_back(film);
    return true;
  }
  bool takeBackFilmOf(const std::string& url, const std::string&, const std::string&) override {
    takenBack.push_back(url);
    return true;
  }
  void confirm(const std::string& url) override { confirmed.push_back(url); }
};

/// Gives a test program the one `QCoreApplication` that a session needs.
void needApplication();

}  // namespace playerx
