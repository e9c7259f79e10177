#include "tests/unit/kvsc/NoMemory.h"

#include <new>

namespace {

thread_local int memoryIsOut = 0;

}  // namespace

// Replaces the allocation function of the program, so that it can be made to fail.
void* operator new[](std::size_t size, const std::nothrow_t& /*unused*/) noexcept {
  if (memoryIsOut > 0) return nullptr;
  try {
    return ::operator new[](size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

namespace kvsc {

NoMemory::NoMemory() { ++memoryIsOut; }

NoMemory::~NoMemory() { --memoryIsOut; }

}  // namespace kvsc
