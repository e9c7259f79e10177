#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <thread>

#include "VeskPlayerX/DownloadItemInterface.h"
#include "download/AutomaticPlayback.h"
#include "download/Host.h"
#include "download/RunState.h"
#include "download/SessionGate.h"
#include "kvpm/Mutex.h"

namespace download {

/// Does what the library's reports on the present session ask for, one report at a time.
///
/// The callback mutex makes them wait for each other. Owner: the worker, whose run calls `expect`,
/// `open` and `close`; the library's threads call `receive` and `passTurn`.
class ReportHandler {
 public:
  using Item = VeskPlayerX::DownloadItemInterface;

  /// Nothing is owned; all of it outlives this object.
  ReportHandler(Host& host, RunState& state, AutomaticPlayback& playback)
      : host_(host), state_(state), playback_(playback) {}

  /// A session is being started: reports are kept for `open` or `close`, which the calling thread
  /// will call. A report on another thread waits for that, so that it has been handled when it
  /// returns; but not for long, since the library may be waiting for that report before it has
  /// started the session: after one that waited in vain no other does.
  void expect();

  /// From here on reports on the session of `item` are handled as they come, after those that were
  /// kept. `item` is used until `close`.
  void open(Item& item);

  /// Reports are ignored from here on. Waits for the one that is being handled.
  void close();

  void receive(const LibraryReport& report);

  /// Waits for the report that is being handled, and does nothing.
  void passTurn();

  /// Whether the calling thread is inside `receive`.
  bool isReporting() const { return reportingThread_ == std::this_thread::get_id(); }

 private:
  void waitForOpening() KVPM_REQUIRES(callbackMutex_);
  void handle(const LibraryReport& report) KVPM_REQUIRES(callbackMutex_);
  void handleProgress(int percent) KVPM_REQUIRES(callbackMutex_);
  void handleBroken() KVPM_REQUIRES(callbackMutex_);

  Host& host_;
  RunState& state_;
  AutomaticPlayback& playback_;
  std::atomic<std::thread::id> reportingThread_{};  // the one inside a report

  kvpm::Mutex callbackMutex_;
  std::condition_variable_any openedOrClosed_;
  std::thread::id opener_ KVPM_GUARDED_BY(callbackMutex_);
  bool isOpeningAwaited_ KVPM_GUARDED_BY(callbackMutex_) = false;
  std::uint64_t expected_ KVPM_GUARDED_BY(callbackMutex_) = 0;  // sessions so far
  SessionGate gate_ KVPM_GUARDED_BY(callbackMutex_);
  Item* item_ KVPM_GUARDED_BY(callbackMutex_) = nullptr;  // null while the gate is closed
};

}  // namespace download
