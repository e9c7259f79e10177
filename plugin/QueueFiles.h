#pragma once

#include <string>
#include <vector>

#include "VeskPlayerX/DownloadItemInterface.h"

namespace plugin {

/// The files in the application-data folder that the queue is read from at the start.
///
/// Used on the thread that starts the manager, before another one writes the queue. Reading blocks
/// for the disk. Never fails: when the disk refuses something, the queue is empty or the files stay
/// as they are.
class QueueFiles {
 public:
  using Items = std::vector<VeskPlayerX::DownloadItemInterface*>;

  /// `folder` has no separator at its end.
  explicit QueueFiles(const std::wstring& folder);

  /// Where the queue is kept.
  const std::wstring& current() const { return current_; }

  /// The queue in the current file. Where that file is missing, the queue of an earlier release,
  /// which becomes the current one: its file is deleted once the current file is on the disk. A
  /// file that is no queue gives no items, and is kept under another name once it is replaced or
  /// deleted. One that cannot be read now gives none either, and the current file is then not
  /// written until it could be read. The items belong to the caller.
  Items readQueue() const;

 private:
  std::wstring current_;
  std::wstring legacy_;
};

}  // namespace plugin
