#include "tests/unit/kvsc/FailingNew.h"

#include <cstdlib>
#include <new>

namespace {

constexpr int kOff = -1;
constexpr int kDone = -2;

thread_local int left = kOff;

}  // namespace

// Replaces the allocation functions of the program, so that any allocation can be made to fail.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (left == 0) {
    left = kDone;
    return nullptr;
  }
  if (left > 0) --left;
  return std::malloc(size > 0 ? size : 1);
}

void* operator new(std::size_t size) {
  void* memory = ::operator new(size, std::nothrow);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
  return ::operator new(size, tag);
}
void* operator new[](std::size_t size) { return ::operator new(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

FailingNew::FailingNew(int passed) { left = passed; }

FailingNew::~FailingNew() { left = kOff; }

bool FailingNew::hasFailed() const { return left == kDone; }
