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
  data_.reset();  // first, because the new one may need its memory
  std::unique_ptr<char[]> fresh = zeroedArray(size);
  if (!fresh) {
    size_ = 0;
    dataSize_ = 0;
    return -1;
  }
  adopt(std::move(fresh), size);
  return 0;
}

int DataBuffer::ReAlloc(unsigned size) {
  std::unique_ptr<char[]> grown = zeroedArray(size);
  if (!grown) return -1;
  // `dataSize_` may exceed the capacity.
  std::copy_n(data_.get(), std::min({dataSize_, size_, size}), grown.get());
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

void DataBuffer::adopt(std::unique_ptr<char[]> data, unsigned size) {
  data_ = std::move(data);
  size_ = size;
  ++allocations_;
}

}  // namespace kvsc
