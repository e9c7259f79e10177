#pragma once

#include <condition_variable>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "playerx/app/session/QueueService.h"

namespace bench {

/// The player of this process, over a queue of completed films. One at a time.
class Player {
 public:
  /// `home` is its folder, which is emptied; `plugins` that of the modules.
  Player(const std::filesystem::path& home, const std::filesystem::path& plugins,
         int completedFilms);

  playerx::session::PlayerSession& session() { return session_; }
  VeskPlayerX::DownloadManagerInterface& manager() { return session_.manager(); }
  const std::string& queueFile() const { return queueFile_; }

  /// Reads the queue, and attaches the view.
  void open();

  /// Lets films be downloaded.
  void start();

  /// Adds an address.
  void add(const std::string& url);

  /// Looks at the queue at every notice until nothing is left to download.
  void waitUntilIdle();

  /// Looks at the queue at every notice until `condition` holds.
  void waitUntil(const std::function<bool()>& condition);

  /// The bytes of this address that have arrived.
  std::uint64_t arrived(const std::string& url) const;

 private:
  void wake();
  bool waitForWake();

  std::string queueFile_;
  playerx::session::PlayerSession session_;
  std::unique_ptr<playerx::session::QueueService> service_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool isWoken_ = false;
};

/// Writes the queue file of so many completed films.
void writeQueueFile(const std::filesystem::path& file, int completedFilms);

}  // namespace bench
