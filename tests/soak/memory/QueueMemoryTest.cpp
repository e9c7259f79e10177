#include <algorithm>
#include <functional>

#include "persistence/TicketParser.h"
#include "tests/soak/Count.h"
#include "tests/soak/memory/FailingMalloc.h"
#include "tests/support/LegacyQueueFile.h"
#include "tests/unit/persistence/QueueFileFixture.h"

namespace persistence {
namespace {

using soak::FailingMalloc;
using Lasting = FailingMalloc::Lasting;

/// A queue file, used while memory is short.
class QueueMemory : public QueueFileFixture {
 protected:
  /// Calls `attempt` with each of the first allocations failing, once or permanently, until it
  /// needs no more of them; with `COUNT` fewer, after the first ones in steps. `attempt` is told
  /// what fails, and returns whether it got that far.
  static void failEach(const std::function<bool(long, Lasting)>& attempt) {
    for (const Lasting lasting : {Lasting::kOnce, Lasting::kForEver}) {
      const long most = soak::countOr(400);
      long passed = 0;
      while (attempt(passed, lasting) && !HasFatalFailure()) passed += 1 + passed / most;
      EXPECT_GT(passed, 5);
    }
  }

  void expectReadWholeOrLeftAlone(const std::string& content) {
    const std::vector<Fields> whole = readOf(content);
    const std::wstring name = path();
    failEach([&](long passed, Lasting lasting) {
      put(content);
      DownloadManagerPersistence::Items items;
      bool hasFailed = false;
      {
        const FailingMalloc failing(passed, lasting);
        items = DownloadManagerPersistence::readDownloadQueue(name);
        hasFailed = failing.hasFailed();
      }
      const std::vector<Fields> loaded = takeFields(items);
      EXPECT_TRUE(loaded == whole || (hasFailed && loaded.empty())) << passed;
      EXPECT_EQ(this->content(), content) << passed;
      EXPECT_EQ(isProtected(), loaded != whole) << passed;
      return hasFailed && !HasFailure();
    });
  }
};

TEST_F(QueueMemory, TooLittleToReadLeavesTheFileAlone) {
  expectReadWholeOrLeftAlone(written({titled(L"one"), titled(std::wstring(5'000, L'x'))}));
}

TEST_F(QueueMemory, TooLittleToReadAnEarlierFileLeavesItAlone) {
  support::LegacyQueueFile legacy;
  legacy.item().text("title", L"one").item().text("title", std::wstring(5'000, L'x'));
  expectReadWholeOrLeftAlone(legacy.document());
}

TEST_F(QueueMemory, TooLittleToWriteLeavesTheOldQueueOrTheNew) {
  const std::vector<Fields> before{titled(L"one"), titled(L"two")};
  const std::vector<Fields> after{titled(L"one"), titled(std::wstring(5'000, L'x')), Fields()};
  const std::string whole = written(after);
  const Queue queue(after);
  const std::wstring name = path();
  failEach([&](long passed, Lasting lasting) {
    const std::string old = written(before);
    bool hasFailed = false;
    {
      const FailingMalloc failing(passed, lasting);
      DownloadManagerPersistence::writeDownloadQueue(name, queue.items());
      hasFailed = failing.hasFailed();
    }
    EXPECT_TRUE(content() == whole || (hasFailed && content() == old)) << passed;
    DownloadManagerPersistence::writeDownloadQueue(name, queue.items());
    EXPECT_EQ(content(), whole) << "saved again, after " << passed;
    return hasFailed && !HasFailure();
  });
}

TEST_F(QueueMemory, TooLittleForATicketYieldsAllOfItsFilmsOrNone) {
  const std::wstring ticket =
      folder()
          .write("two.tix",
                 "TixVeskVersion=1\nstart\nurl=http://h/a.avi\nend\nstart\n"
                 "title=A title that is not short\nurl=http://h/b.avi\nend\n")
          .wstring();
  failEach([&](long passed, Lasting lasting) {
    TicketParser::Items items;
    bool hasFailed = false;
    {
      const FailingMalloc failing(passed, lasting);
      items = TicketParser::parseClearTicket(ticket);
      hasFailed = failing.hasFailed();
    }
    const std::size_t count = takeFields(items).size();
    EXPECT_TRUE(count == 2 || (hasFailed && count == 0)) << passed << ": " << count;
    return hasFailed && !HasFailure();
  });
}

}  // namespace
}  // namespace persistence
