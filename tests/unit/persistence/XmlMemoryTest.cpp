// Each allocation of the XML library fails once: a queue that cannot be read is not lost. All of
// them are freed.
#include <libxml/xmlmemory.h>

#include <cstdlib>
#include <cstring>

#include "tests/unit/persistence/QueueFileFixture.h"

namespace persistence {
namespace {

/// Makes one allocation of the XML library fail, or that one and all later ones.
class FailingXmlMemory {
 public:
  FailingXmlMemory(long allocationsBefore, bool forever) {
    left_ = allocationsBefore;
    forever_ = forever;
    hasFailed_ = false;
    xmlMemSetup(std::free, allocate, reallocate, duplicate);
  }
  FailingXmlMemory(const FailingXmlMemory&) = delete;
  FailingXmlMemory& operator=(const FailingXmlMemory&) = delete;
  ~FailingXmlMemory() { xmlMemSetup(std::free, std::malloc, std::realloc, strdup); }

  static bool hasFailed() { return hasFailed_; }

 private:
  static bool mustFail() {
    if (hasFailed_) return forever_;
    hasFailed_ = left_-- == 0;
    return hasFailed_;
  }
  static void* allocate(std::size_t size) { return mustFail() ? nullptr : std::malloc(size); }
  static void* reallocate(void* memory, std::size_t size) {
    return mustFail() ? nullptr : std::realloc(memory, size);
  }
  static char* duplicate(const char* text) { return mustFail() ? nullptr : strdup(text); }

  static inline long left_ = 0;
  static inline bool forever_ = false;
  static inline bool hasFailed_ = false;
};

class XmlMemory : public QueueFileFixture, public testing::WithParamInterface<bool> {
 protected:
  static std::vector<Fields> queue() {
    return {titled(L"one & \"two\" <\u20AC>\n"), titled(std::wstring(5'000, L'x')), Fields()};
  }
};

TEST_P(XmlMemory, AQueueIsReadCompletelyOrLeftAlone) {
  const std::string whole = written(queue());
  bool hasFailed = true;
  for (long allocations = 0; hasFailed; ++allocations) {
    std::vector<Fields> loaded;
    {
      const FailingXmlMemory memory(allocations, GetParam());
      loaded = read();
      hasFailed = FailingXmlMemory::hasFailed();
    }
    // The library can do without some allocations.
    const bool isWhole = loaded == queue();
    ASSERT_TRUE(isWhole || (hasFailed && loaded.empty())) << allocations;
    ASSERT_EQ(content(), whole) << allocations;
    ASSERT_EQ(isProtected(), !isWhole) << allocations;
  }
}

INSTANTIATE_TEST_SUITE_P(OnceOrFromThenOn, XmlMemory, testing::Bool());

/// Counts the blocks that the XML library has allocated and not freed.
class CountedXmlMemory {
 public:
  CountedXmlMemory() {
    inUse_ = 0;
    xmlMemSetup(release, allocate, reallocate, duplicate);
  }
  CountedXmlMemory(const CountedXmlMemory&) = delete;
  CountedXmlMemory& operator=(const CountedXmlMemory&) = delete;
  ~CountedXmlMemory() { xmlMemSetup(std::free, std::malloc, std::realloc, strdup); }

  static long blocksInUse() { return inUse_; }

 private:
  static void release(void* memory) {
    if (memory != nullptr) --inUse_;
    std::free(memory);
  }
  static void* allocate(std::size_t size) {
    ++inUse_;
    return std::malloc(size);
  }
  static void* reallocate(void* memory, std::size_t size) {
    if (memory == nullptr) ++inUse_;
    return std::realloc(memory, size);
  }
  static char* duplicate(const char* text) {
    ++inUse_;
    return strdup(text);
  }

  static inline long inUse_ = 0;
};

using XmlBlocks = QueueFileFixture;

TEST_F(XmlBlocks, NoneIsLeftOfADocumentThatWasRead) {
  const std::string documents[] = {
      queueHolding("<DownloadItem title=\"one &amp; two\"/>"),
      queueHolding("<DownloadItem"),
      kDeclaration + "<!DOCTYPE DownloadQueue [<!ENTITY a 'b'>]><DownloadQueue/>\n",
  };
  for (const std::string& document : documents) {
    readOf(document);  // at its first use the library allocates what it keeps for good
    const CountedXmlMemory memory;
    readOf(document);
    EXPECT_EQ(CountedXmlMemory::blocksInUse(), 0) << document;
  }
}

}  // namespace
}  // namespace persistence
