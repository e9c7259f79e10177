// Each allocation of the module fails, once or with all that follow: no file is replaced, set aside
// or deleted unless its items have been read.
#include <libxml/xmlmemory.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>
#include <utility>

#include "persistence/TicketParser.h"
#include "playerx/platform/MoviesFolder.h"
#include "tests/support/LegacyQueueFile.h"
#include "tests/unit/persistence/QueueFileFixture.h"

namespace {

constexpr long kForEver = std::numeric_limits<long>::max();

/// Allocations of this thread that succeed before so many fail.
thread_local long successesLeft = 0;
thread_local long failuresLeft = 0;

bool nextFails() {
  if (failuresLeft == 0 || successesLeft-- > 0) return false;
  successesLeft = 0;
  --failuresLeft;
  return true;
}

}  // namespace

void* operator new(std::size_t size) {
  void* const memory = nextFails() ? nullptr : std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { operator delete(memory); }

namespace persistence {
namespace {

class LackOfMemory : public QueueFileFixture {
 protected:
  /// Runs `action`, of whose allocations so many fail from this index on. Returns whether it got
  /// that far.
  template <class Action>
  static bool runFailing(long allocations, Action action, long failures = 1) {
    successesLeft = allocations;
    failuresLeft = failures;
    action();
    return std::exchange(failuresLeft, 0) < failures;
  }

  /// Loads a file of this content again and again, each time with another failing allocation.
  void expectReadWholeOrLeftAlone(const std::string& content, const std::vector<Fields>& queue,
                                  long failures = 1) {
    const std::wstring name = path();
    bool hasFailed = true;
    for (long allocations = 0; hasFailed; ++allocations) {
      put(content);
      DownloadManagerPersistence::Items items;
      hasFailed = runFailing(
          allocations, [&] { items = DownloadManagerPersistence::readDownloadQueue(name); },
          failures);
      const auto loaded = takeFields(items);
      ASSERT_TRUE(loaded == queue || (hasFailed && loaded.empty())) << allocations;
      ASSERT_EQ(this->content(), content) << allocations;
      ASSERT_EQ(isProtected(), loaded != queue) << allocations;
    }
  }
};

TEST_F(LackOfMemory, AQueueIsReadCompletelyOrLeftAlone) {
  const std::vector<Fields> queue{titled(L"one"), titled(std::wstring(5'000, L'x')), Fields()};
  expectReadWholeOrLeftAlone(written(queue), queue);
  expectReadWholeOrLeftAlone(written(queue), queue, kForEver);
}

TEST_F(LackOfMemory, AnEarlierQueueIsReadCompletelyOrLeftAlone) {
  support::LegacyQueueFile legacy;
  legacy.item().text("title", L"one").item().text("title", std::wstring(5'000, L'x'));
  expectReadWholeOrLeftAlone(legacy.document(),
                             {titled(L"one"), titled(std::wstring(5'000, L'x'))});
}

TEST_F(LackOfMemory, AQueueIsWrittenCompletelyOrNotAtAll) {
  const std::vector<Fields> before{titled(L"one"), titled(L"two"), titled(L"three")};
  const std::vector<Fields> after{titled(L"one"), titled(std::wstring(5'000, L'x')), Fields(),
                                  titled(L"three")};
  const std::string whole = written(after);
  const Queue queue(after);
  const std::wstring name = path();
  bool hasFailed = true;
  for (long allocations = 0; hasFailed; ++allocations) {
    const std::string old = written(before);
    hasFailed = runFailing(
        allocations, [&] { DownloadManagerPersistence::writeDownloadQueue(name, queue.items()); });
    ASSERT_TRUE(content() == whole || (hasFailed && content() == old)) << allocations;
    DownloadManagerPersistence::writeDownloadQueue(name, queue.items());
    ASSERT_EQ(content(), whole) << "saved again, after " << allocations;
  }
}

/// Counts the memory of the XML library while it lives.
class LibraryMemory {
 public:
  LibraryMemory() {
    xmlMemGet(&free_, &malloc_, &realloc_, &strdup_);
    xmlMemSetup(release, allocate, reallocate, strdup_);
  }
  LibraryMemory(const LibraryMemory&) = delete;
  LibraryMemory& operator=(const LibraryMemory&) = delete;
  ~LibraryMemory() { xmlMemSetup(free_, malloc_, realloc_, strdup_); }

  static inline thread_local std::size_t largest = 0;  ///< bytes asked for at once

 private:
  static void* allocate(std::size_t size) {
    largest = std::max(largest, size);
    return std::malloc(size);
  }
  static void* reallocate(void* memory, std::size_t size) {
    largest = std::max(largest, size);
    return std::realloc(memory, size);
  }
  static void release(void* memory) { std::free(memory); }

  xmlFreeFunc free_ = nullptr;
  xmlMallocFunc malloc_ = nullptr;
  xmlReallocFunc realloc_ = nullptr;
  xmlStrdupFunc strdup_ = nullptr;
};

TEST_F(LackOfMemory, TheLibraryTakesNoCopyOfAFile) {
  std::string items;
  while (items.size() < 2'000'000) items += "<DownloadItem title=\"film\"/>";
  put(queueHolding(items));
  const LibraryMemory memory;
  EXPECT_GT(read().size(), 10'000u);
  EXPECT_GT(LibraryMemory::largest, 0u);
  EXPECT_LT(LibraryMemory::largest, 100'000u);
}

TEST_F(LackOfMemory, AProtectedTicketIsConsumedOnlyWhenAllItsItemsExist) {
  playerx::setMoviesFolder((folder() / "Movies").wstring());
  VeskDrmTicketData record{"sealed", L"A film of some length", 42, L"Vesk", "2.0"};
  const std::wstring ticket = (folder() / "Ticket.tix").wstring();
  bool hasFailed = true;
  for (long allocations = 0; hasFailed; ++allocations) {
    folder().write("Ticket.tix", "sealed");
    std::vector<VeskDrmTicketData*> records{&record, &record};
    TicketParser::Items items;
    hasFailed = runFailing(allocations, [&] {
      try {
        items = TicketParser::processEncryptedTicket(std::move(records), ticket);
      } catch (const std::bad_alloc&) {
        // Copying the path, which the caller does.
      }
    });
    ASSERT_TRUE(items.size() == 2 || exists("Ticket.tix")) << allocations;
    ASSERT_TRUE(items.size() == 2 || (hasFailed && items.empty())) << allocations;
    takeFields(items);
  }
  EXPECT_FALSE(exists("Ticket.tix"));
  playerx::setMoviesFolder(L"");
}

}  // namespace
}  // namespace persistence
