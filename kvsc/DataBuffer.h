#pragma once

#include <memory>

namespace kvsc {

/// The growable byte buffer that holds received data.
///
/// Owns its bytes; used by one thread at a time. Bytes that are passed in must not lie in the
/// buffer. Growth reallocates to the exact size, without doubling: the client allocates its read
/// size once and keeps it. Nothing throws: a failed allocation returns -1. The owner may set the
/// number of bytes in use to any value, even beyond the capacity; nothing here reads that far.
class DataBuffer {
 public:
  DataBuffer() = default;
  DataBuffer(const DataBuffer&) = delete;
  DataBuffer& operator=(const DataBuffer&) = delete;
  virtual ~DataBuffer() = default;

  /// Replaces the array with one of exactly `size` zero bytes (0 is allowed); the number of bytes
  /// in use stays. Returns 0, or -1 with an empty buffer.
  int Alloc(unsigned size);

  /// Like `Alloc`, but copies the bytes in use as far as they fit. Returns 0, or -1 with the buffer
  /// unchanged.
  int ReAlloc(unsigned size);

  /// Frees the array.
  void Free();

  /// Adds `length` bytes after those in use. Returns 0, or -1 with the buffer unchanged.
  int append(const char* data, unsigned length);

  /// Replaces the content, in the same array when that is large enough. Returns 0, or -1 with an
  /// empty buffer.
  int update(const char* data, unsigned length);

  /// The array, null before the first allocation; valid until the next call that changes it.
  char* GetData() { return data_.get(); }
  const char* GetData() const { return data_.get(); }

  /// Capacity in bytes.
  unsigned GetSize() const { return size_; }

  /// Bytes in use.
  unsigned getDataSize() const { return dataSize_; }

  /// Sets the number of bytes in use, for bytes that were written to the array directly.
  void setDataSize(unsigned dataSize) { dataSize_ = dataSize; }

  /// Number of allocations since the buffer was constructed or freed.
  unsigned getAllocations() const { return allocations_; }

 private:
  void adopt(std::unique_ptr<char[]> data, unsigned size);

  std::unique_ptr<char[]> data_;
  unsigned dataSize_ = 0;
  unsigned size_ = 0;
  unsigned allocations_ = 0;
};

}  // namespace kvsc
