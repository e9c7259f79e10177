#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "plugin/DownloadManager.h"
#include "tests/support/TempDir.h"
#include "tests/support/fakes/FakeContext.h"
#include "tests/support/fakes/FakeDownloadLibrary.h"
#include "tests/support/fakes/FakePlayer.h"
#include "tests/support/fakes/FakeServices.h"
#include "tests/support/fakes/FakeView.h"

/// A player without a screen around one download manager, which runs as it does in the real one.
///
/// Queues are spoken of as in QueueText.h: "A3 B1" is A being downloaded above B, which waits.
/// Unless a test says otherwise its items are rights-protected, so that nothing goes to the
/// network: the services authorise 1000 bytes at `kFilm`, and the library reports what the test
/// tells it to.
class ManagerFixture : public ::testing::Test {
 protected:
  using Item = VeskPlayerX::DownloadItemInterface;
  using Uids = std::vector<unsigned long long>;
  using Change = std::function<void(Item&)>;

  static constexpr char kFilm[] = "http://films.example/film.vesk";

  ManagerFixture();
  ~ManagerFixture() override;

  // Before the start.

  /// The queue that an earlier run has left; `change` may add to each item.
  void given(const std::string& queue, const Change& change = {});

  /// Starts the manager with the view attached; with the queue that an earlier run has left.
  void start();
  void start(const std::string& queue, const Change& change = {});

  /// Starts the manager with the view attached, its scheduler asleep until `wakeScheduler`.
  void startAsleep();
  void startAsleep(const std::string& queue, const Change& change = {});
  void wakeScheduler();

  // Afterwards.

  /// A protected ticket's record for a film of this title and content.
  static VeskDrmTicketData record(const std::wstring& title, std::int32_t usageId = 0);

  /// As a player that quits: gives the manager up and waits for its end.
  void shutDown();

  DownloadManager& manager() { return *manager_; }
  std::string queue();
  unsigned int id(const std::string& title);

  int percentOf(const std::string& title);

  /// The queue's own item.
  Item& item(const std::string& title);

  /// Waits until the queue is like this, and reports a failure when it never is.
  void await(const std::string& queue);

  /// Waits for the next transfer, which has to be that of `title`; its session's id.
  unsigned long long transferOf(const std::string& title);

  /// Every session that the library was asked to stop, in order. Items of the queue do not know
  /// their sessions: what they ask for, session 0, is left out.
  Uids stoppedSessions() const;

  /// The queue as it was written last.
  std::string written() const;

  /// The queue as it was written at each notice of `operation`.
  std::vector<std::string> writtenDuring(const std::function<void()>& operation);

  /// From now on `isWritten` tells whether the queue is written.
  void forgetFile() const;
  bool isWritten() const;

  /// The view's notices since `log_` was cleared, the questions left out.
  std::vector<std::string> notices() const;

  std::filesystem::path queueFile() const { return folder_ / "data" / "downloadmanager.xml"; }
  std::filesystem::path mediaFile(const std::string& name) const {
    return folder_ / "media" / name;
  }

  support::TempDir folder_;
  support::EventLog log_;
  support::FakeView view_{log_};
  support::FakePlayer player_{log_};
  support::FakeServices services_{log_};
  support::FakeDownloadLibrary library_{log_};
  support::FakeContext context_;

 private:
  struct Release {
    void operator()(DownloadManager* manager) const { manager->kpimRelease(); }
  };

  std::unique_ptr<DownloadManager, Release> manager_;
  std::size_t transfers_ = 0;
};
