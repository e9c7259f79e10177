#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "playerx/platform/Descriptor.h"
#include "playerx/platform/GuardMutex.h"

namespace playerx::window {

/// A film's file, read while its bytes are still arriving. Stays readable when the file is moved or
/// deleted. All operations may be called from any thread.
class GrowingFile {
 public:
  /// `total` is the size of the whole film, 0 when not known. Null when the file cannot be opened;
  /// `*error` is then the number of the error.
  static std::shared_ptr<GrowingFile> open(const std::string& path, std::uint64_t total,
                                           bool isComplete, int* error);

  GrowingFile(Descriptor file, std::uint64_t total, bool isComplete);

  /// Reads at most `length` bytes at `offset`, and waits there until at least one has arrived.
  /// Returns how many were read, 0 at the end of what will ever arrive, and -1 after a failure,
  /// after `cancel`, and when the bytes before `offset` are gone.
  std::int64_t read(std::uint64_t offset, char* data, std::size_t length);

  /// Bytes that can be read without waiting.
  std::uint64_t arrived() const;

  /// Size of the whole film; 0 when not known.
  std::uint64_t total() const;

  /// Nothing more will arrive: the film is complete, or its download has ended.
  void finish();
  bool isFinished() const { return isFinished_; }

  /// Ends all reads, those that wait included, for good. Does not wait for them.
  void cancel();
  bool isCancelled() const { return isCancelled_; }

  /// Wakes reads that wait, since bytes may have arrived. They look by themselves too, less often.
  void wake();

 private:
  bool waitBehind(std::uint64_t offset);

  const Descriptor file_;
  const std::uint64_t total_;
  std::atomic<bool> isFinished_;          // written under mutex_, since sleepers test it
  std::atomic<bool> isCancelled_{false};  // likewise
  GuardMutex mutex_;
  Condition changed_;
};

}  // namespace playerx::window
