#pragma once

#include <string>
#include <vector>

#include "VeskPlayerX/DownloadItemInterface.h"
#include "kvpm/CritSection.h"

/// Keeps the download queue in a file, and imports the file of an earlier release.
///
/// All operations are static and may be called from any thread; a caller that holds the lock of the
/// queue takes it before, never after. Items that are returned are new and belong to the caller.
/// Nothing here throws or reports an error: a file that cannot be read is an empty queue, and one
/// that cannot be written stays as it was.
///
/// A file that could not be read (for lack of a descriptor, a permission or memory) may still hold
/// a queue. Such a file is protected: it is not replaced until it has been read or is gone. One
/// that was read and is no queue is moved before it is replaced, to a new name in its folder:
/// '<path>.unreadable', or '<path>.unreadable.2' and so on where that name is taken; it is not
/// replaced when it cannot be moved. The lock guards the lists of these files and the text that was
/// written last.
class DownloadManagerPersistence {
 public:
  using Items = std::vector<VeskPlayerX::DownloadItemInterface*>;

  /// Replaces the file with one that holds `items`, in their order. Always true, even when nothing
  /// could be written; the old file then stays as it was. Characters of the items' texts that XML
  /// cannot carry are written as U+FFFD, and texts of more than 9,000,000 bytes are truncated.
  static bool writeDownloadQueue(const std::wstring& path, const Items& items);

  /// The queue in the file, which may be of this release or of an earlier one; empty when it is
  /// missing, empty, unreadable or of no known format.
  static Items readDownloadQueue(const std::wstring& path);

  /// Imports the queue of an earlier release: reads it from the file `legacy`, writes it to
  /// `current`, and deletes `legacy` once the new file is on the disk. Nothing is written to
  /// `current` as long as `legacy` is there and could not be read. Blocks as long as the disk
  /// takes.
  static Items migrateDownloadQueue(const std::wstring& legacy, const std::wstring& current);

  /// The queue in a file of this release's format.
  static Items readNewQueue(const std::wstring& path) KVPM_REQUIRES(persistenceLock);

  /// The queue in a file of the earlier release's format.
  static Items readOldQueue(const std::wstring& path) KVPM_REQUIRES(persistenceLock);

  /// UTF-8 of wide text, terminated, as an array from `new[]` that the caller frees with
  /// `delete[]`. Empty where the text cannot be converted.
  static unsigned char* wstringToUtf8(const std::wstring& text);

  /// Wide text of terminated UTF-8. Empty for null and where it cannot be converted.
  static std::wstring utf8ToWstring(const unsigned char* text);

  /// Wide text as an earlier release wrote it: base64 of its 32-bit characters. An incomplete last
  /// character is dropped. Empty for null and for a text that the codec rejects.
  static std::wstring encodedStringToWstring(const char* text);

  /// Serialises all reading and writing of queue files. Created when the module is loaded.
  static kvpm::CritSection persistenceLock;
};
