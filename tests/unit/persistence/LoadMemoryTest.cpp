// Every allocation of ours fails once while a queue is loaded: no file is taken for understood when
// its items never arrived.
#include <cstdlib>
#include <new>

#include "tests/support/LegacyQueueFile.h"
#include "tests/unit/persistence/QueueFileFixture.h"

namespace {

/// Allocations of this thread until the one that fails; below 0 for none.
thread_local long allocationsLeft = -1;

}  // namespace

void* operator new(std::size_t size) {
  const bool fails = allocationsLeft >= 0 && allocationsLeft-- == 0;
  void* const memory = fails ? nullptr : std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }

namespace persistence {
namespace {

class LoadMemory : public QueueFileFixture {
 protected:
  /// Loads files of this content, each with another allocation that fails.
  void expectReadWholeOrSetAside(const std::string& content, const std::vector<Fields>& queue) {
    const std::wstring name = path();
    bool hasFailed = true;
    for (long allocations = 0; hasFailed; ++allocations) {
      put(content);
      bool isKept = false;
      allocationsLeft = allocations;
      const auto items = DownloadManagerPersistence::loadDownloadQueue(name, &isKept);
      hasFailed = allocationsLeft < 0;
      allocationsLeft = -1;
      const auto loaded = taken(items);
      ASSERT_TRUE(loaded == queue || (hasFailed && loaded.empty())) << allocations;
      ASSERT_EQ(exists("downloadmanager.xml"), loaded == queue) << allocations;
      ASSERT_TRUE(isKept) << allocations;
      std::filesystem::remove(folder() / "downloadmanager.xml.unreadable");
    }
  }
};

TEST_F(LoadMemory, AQueueIsReadWholeOrSetAside) {
  const std::vector<Fields> queue{titled(L"one"), titled(std::wstring(5'000, L'x')), Fields()};
  expectReadWholeOrSetAside(written(queue), queue);
}

TEST_F(LoadMemory, AnEarlierQueueIsReadWholeOrSetAside) {
  support::LegacyQueueFile legacy;
  legacy.item().text("title", L"one").item().text("title", std::wstring(5'000, L'x'));
  expectReadWholeOrSetAside(legacy.document(), {titled(L"one"), titled(std::wstring(5'000, L'x'))});
}

}  // namespace
}  // namespace persistence
