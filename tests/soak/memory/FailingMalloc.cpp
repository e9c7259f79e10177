#include "tests/soak/memory/FailingMalloc.h"

#include <atomic>
#include <cerrno>
#include <cstddef>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
}

namespace {

using Threads = soak::FailingMalloc::Threads;

std::atomic<bool> isOn = false;
std::atomic<bool> lasts = false;
std::atomic<bool> failed = false;
std::atomic<long> left = 0;
std::atomic<Threads> counted = Threads::kThisOne;
thread_local bool isMaker = false;

bool fails() {
  if (!isOn || isMaker != (counted == Threads::kThisOne)) return false;
  const long before = left--;
  if (before > 0 || (before < 0 && !lasts)) return false;
  failed = true;
  errno = ENOMEM;
  return true;
}

}  // namespace

// In place of those of the C library, for the whole program.
extern "C" {

void* malloc(std::size_t size) { return fails() ? nullptr : __libc_malloc(size); }

void* calloc(std::size_t count, std::size_t size) {
  return fails() ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
  return size > 0 && fails() ? nullptr : __libc_realloc(memory, size);
}

}  // extern "C"

namespace soak {

FailingMalloc::FailingMalloc(long passed, Lasting lasting, Threads threads) {
  isMaker = true;
  counted = threads;
  lasts = lasting == Lasting::kForEver;
  failed = false;
  left = passed;
  isOn = true;
}

FailingMalloc::~FailingMalloc() {
  isOn = false;
  isMaker = false;
}

bool FailingMalloc::hasFailed() const { return failed; }

}  // namespace soak
