#pragma once

#include <vector>

#include "VeskPlayerX/DownloadItemInterface.h"
#include "VeskPlayerX/DownloadStatus.h"

namespace VeskPlayerX {

/// Which state a queued item is in.
struct QueuedVersion {
  unsigned int id = 0;  ///< as `DownloadItemInterface::getId` has it

  DownloadStatusEnumType status = DownloadStatusQueued;  ///< as of this version

  /// Another one after every change of what a view shows, unlike that of any other item; 0 for an
  /// item that does not tell.
  unsigned long long version = 0;

  /// Whether it is the same item in the same state.
  bool operator==(const QueuedVersion&) const = default;
};

/// For a view of a long queue, which asks for the items that have changed instead of copying all.
/// Found by `dynamic_cast` from a download manager; one that does not offer it is to be asked for
/// whole copies. Safe on all threads; never waits for longer than a look-up.
class QueueReaderInterface {
 public:
  QueueReaderInterface() = default;
  QueueReaderInterface(const QueueReaderInterface&) = delete;
  QueueReaderInterface& operator=(const QueueReaderInterface&) = delete;
  virtual ~QueueReaderInterface() = default;

  /// All items in the queue's order.
  virtual std::vector<QueuedVersion> getVersions() = 0;

  /// A new copy of an item, which the caller deletes; null when it is not queued.
  virtual DownloadItemInterface* getCopy(unsigned int id) = 0;
};

}  // namespace VeskPlayerX
