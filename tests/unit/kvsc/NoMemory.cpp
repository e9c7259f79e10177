#include "tests/unit/kvsc/NoMemory.h"

#include <new>

namespace {

thread_local int memoryIsOut = 0;
thread_local std::size_t refused = 0;

}  // namespace

// Replaces the allocation function of the program, so that it can be made to fail.
void* operator new[](std::size_t size, const std::nothrow_t& /*unused*/) noexcept {
  if (memoryIsOut > 0) {
    refused = size;
    return nullptr;
  }
  try {
    return ::operator new[](size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

namespace kvsc {

NoMemory::NoMemory() {
  ++memoryIsOut;
  refused = 0;
}

NoMemory::~NoMemory() { --memoryIsOut; }

std::size_t NoMemory::bytesRefused() const { return refused; }

}  // namespace kvsc
