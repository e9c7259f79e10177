#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace kvpm {

/// How `File::open` opens.
enum FileOpenMode : std::int32_t {
  FileOpenRead = 0,   ///< read an existing file
  FileOpenWrite = 1,  ///< write new content that replaces the file at `close`
};

/// One open file. Used by one thread at a time.
///
/// In write mode the new content appears under the name only at `close`, whole or not at all: a
/// writer that fails, is destroyed before `close`, or dies at any instant leaves the old file. No
/// call but `sync` waits for the disk; the content is synced within a second on a thread of the
/// platform.
class File {
 public:
  File();
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  /// Closes a file open for reading; drops an unclosed file open for writing, so that the old
  /// content stays.
  ~File();

  /// Opens `path`, native or with "/" separators. Returns 0 on success and the system's error
  /// number (`errno` values) otherwise. An open file is closed, or dropped, first.
  int open(const std::wstring& path, FileOpenMode mode);

  /// Size in bytes of the file open for reading; of what was written so far in write mode; -1 when
  /// no file is open or the size cannot be learnt.
  std::int64_t getTotalSize() const;

  /// Reads up to `length` bytes from the present position. Returns the bytes read, 0 at the end
  /// and -1 on an error or when the file is not open for reading.
  std::int64_t read(void* buffer, std::uint64_t length);

  /// Says of the content that is to be written, whole and in one call, that it is as long as the
  /// file's present one, which this process has put there, and differs from it in bytes [begin,
  /// end) alone. A long file then costs the time that the change takes: a small change may be made
  /// in the file itself, in one step and already by `write`. Without effect on a file that another
  /// program has changed, and when no file is open for writing.
  void expectChange(std::uint64_t begin, std::uint64_t end);

  /// Appends `length` bytes. Returns the bytes written, fewer than `length` or -1 on an error.
  /// After a failure `close` keeps the old file.
  std::int64_t write(const void* buffer, std::uint64_t length);

  /// Has the content written so far on the disk when it returns, and makes `close` return only once
  /// the name is there too: for a writer that deletes another copy next. Blocks as long as the disk
  /// takes. Returns 0 on success and an error number otherwise; then `close` keeps the old file.
  /// EBADF when no file is open for writing.
  int sync();

  /// Ends reading, or puts what was written in the place of the old file. Returns 0 on success and
  /// an error number otherwise; then the old file is as it was. Without an open file: 0.
  int close();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace kvpm
