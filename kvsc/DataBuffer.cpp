#include "kvsc/DataBuffer.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

namespace kvsc {
namespace {

std::unique_ptr<char[]> zeroedArray(unsigned size) {
  return std::unique_ptr<char[]>(new (std::nothrow) char[size]());
}

}  // namespace

int DataBuffer::Alloc(unsigned size) {
  data_.reset();
  adopt(zeroedArray(size), size);
  return data_ ? 0 : -1;
}

int DataBuffer::ReAlloc(unsigned size) {
  if (!data_) return Alloc(size);
  std::unique_ptr<char[]> grown = zeroedArray(size);
  if (!grown) return -1;
  std::copy_n(data_.get(), std::min(dataSize_, size), grown.get());
  adopt(std::move(grown), size);
  return 0;
}

void DataBuffer::Free() {
  data_.reset();
  dataSize_ = 0;
  size_ = 0;
  allocations_ = 0;
}

int DataBuffer::append(const char* data, unsigned length) {
  if (length > std::numeric_limits<unsigned>::max() - dataSize_) return -1;
  const unsigned needed = dataSize_ + length;
  if ((size_ == 0 || needed > size_) && ReAlloc(needed) != 0) return -1;
  std::copy_n(data, length, data_.get() + dataSize_);
  dataSize_ = needed;
  return 0;
}

int DataBuffer::update(const char* data, unsigned length) {
  if (size_ < length && Alloc(length) != 0) return -1;
  std::copy_n(data, length, data_.get());
  dataSize_ = length;
  return 0;
}

void DataBuffer::setDataSize(unsigned dataSize) { dataSize_ = std::min(dataSize, size_); }

/// Takes a new array, or with a null one what is left after a failure: an empty buffer.
void DataBuffer::adopt(std::unique_ptr<char[]> data, unsigned size) {
  data_ = std::move(data);
  size_ = data_ ? size : 0;
  dataSize_ = std::min(dataSize_, size_);
  allocations_ += data_ ? 1 : 0;
}

}  // namespace kvsc
