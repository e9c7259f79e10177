#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "KPB/DownloadInfo.h"
#include "kvpm/Mutex.h"
#include "plugin/Confirmations.h"
#include "plugin/OperationLock.h"
#include "plugin/ProgressReports.h"
#include "plugin/ProgressRules.h"
#include "plugin/ServicesLookup.h"
#include "plugin/SharedQueue.h"

namespace plugin {

/// What is reported of downloads, by the worker above all: fields of their items, their status and
/// how far they have got.
///
/// Operations of the interface, for all threads and at any time: none takes the operation lock, so
/// that a transfer can always report and come to its end.
class Progress {
 public:
  /// Nothing is owned but what `context` finds; all outlives this object.
  Progress(SharedQueue& queue, OperationLock& lock, ServicesLookup& services,
           KPIM::Context* context);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  bool updatePath(unsigned int id, const std::wstring& path);
  bool updateSize(unsigned int id, unsigned long long size);
  bool updateSlotAssignment(unsigned int id, int slot);
  bool setTicketAlreadyTorn(unsigned int id);
  bool setPlayable(unsigned int id, bool playable);
  bool setDownloadUrl(unsigned int id, const std::wstring& url);
  bool setDownloadInfo(unsigned int id, const KPB::DownloadInfo& info);
  bool setTicketId(unsigned int id, long ticketId);

  bool updateStatus(unsigned int id, DownloadStatusEnumType status);
  bool updateDownloadProgress(unsigned int id, int percent);

  /// Waits until the services have been told everything. Afterwards nothing may be reported.
  void finish() { confirmations_.finish(); }

 private:
  /// A report that is not recorded yet.
  struct Pending {
    ProgressReports::Number number = 0;
    ProgressOfTicket progress;
  };

  std::optional<Pending> begin(unsigned int id, int percent);
  void end(unsigned int id, const Pending& pending);
  void confirm(long ticketId, std::uint64_t bytes);
  void tellServices(long ticketId, std::uint64_t bytes);
  void tellPlayerOfFinished(const std::wstring& path, unsigned long long uid);

  SharedQueue& queue_;
  OperationLock& lock_;
  ServicesLookup& services_;
  KPIM::Context* const context_;

  kvpm::Mutex mutex_;  ///< taken before the queue lock
  ProgressReports reports_ KVPM_GUARDED_BY(mutex_);

  Confirmations confirmations_;  // last: its thread uses the others
};

}  // namespace plugin
