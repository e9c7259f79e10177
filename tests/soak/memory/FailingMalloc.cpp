#include "tests/soak/memory/FailingMalloc.h"

#include <cerrno>
#include <cstddef>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
}

namespace {

struct Plan {
  bool isOn = false;
  bool lasts = false;
  bool hasFailed = false;
  long left = 0;
};

thread_local Plan plan;

bool fails() {
  if (!plan.isOn) return false;
  const bool isTheOne = plan.left-- == 0;
  const bool isBehind = plan.left < 0 && plan.lasts;
  if (!isTheOne && !isBehind) return false;
  plan.hasFailed = true;
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

FailingMalloc::FailingMalloc(long passed, Lasting lasting) {
  plan = {true, lasting == Lasting::kForEver, false, passed};
}

FailingMalloc::~FailingMalloc() { plan.isOn = false; }

bool FailingMalloc::hasFailed() const { return plan.hasFailed; }

}  // namespace soak
