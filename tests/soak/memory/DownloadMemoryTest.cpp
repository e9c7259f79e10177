#include <gmock/gmock.h>

#include <chrono>
#include <iostream>
#include <new>
#include <optional>
#include <thread>

#include "tests/soak/Count.h"
#include "tests/soak/memory/FailingMalloc.h"
#include "tests/unit/plugin/ManagerFixture.h"

namespace soak {
namespace {

using Lasting = FailingMalloc::Lasting;

/// A download while memory is short on the threads of the module and of the library.
class DownloadMemory : public ManagerFixture {
 protected:
  /// Whether one of its allocations has failed.
  bool downloadFailing(long passed, Lasting lasting) {
    startAsleep("A1");
    const std::size_t others = library_.sessionCount();
    bool hasFailed = false;
    {
      const FailingMalloc failing(passed, lasting, FailingMalloc::Threads::kOthers);
      wakeScheduler();
      support::waitFor(
          [&] { return library_.sessionCount() > others || hasEnded() || failing.hasFailed(); });
      if (library_.sessionCount() > others) complete(others);
      hasFailed = failing.hasFailed();
    }
    goOn(others);
    EXPECT_EQ(queue(), "A4") << passed << (lasting == Lasting::kOnce ? " once" : " for ever");
    shutDown();
    // The last save may be the one that failed; then the next start asks for the film once more.
    EXPECT_THAT(written(), testing::MatchesRegex("A[0-9]")) << passed;
    return hasFailed;
  }

 private:
  bool hasEnded() { return queue() == "A4" || queue() == "A6"; }

  /// Has the library report on a thread of its own how a session ends.
  void complete(std::size_t number) {
    const auto uid = library_.session(number)->uid;
    std::thread([this, uid] {
      try {
        library_.began(uid);
        library_.progress(uid, 50);
        library_.complete(uid);
      } catch (const std::bad_alloc&) {
      }
    }).join();
  }

  /// With memory again: what was not carried out is, and what has failed is tried again.
  void goOn(std::size_t next) {
    support::waitFor([&] {
      if (queue() == "A6") manager().retry(id("A"));
      if (library_.sessionCount() > next) complete(next++);
      return queue() == "A4";
    });
  }
};

TEST_F(DownloadMemory, TooLittleForADownloadLosesNoFilmAndHangsNothing) {
  for (const Lasting lasting : {Lasting::kOnce, Lasting::kForEver}) {
    const long most = countOr(40);
    long passed = 0;
    long tried = 0;
    for (; downloadFailing(passed, lasting) && !HasFailure(); ++tried) passed += 1 + passed / most;
    EXPECT_GT(passed, 50);
    std::cout << passed << " allocations, of which " << tried << " were made to fail" << std::endl;
  }
}

}  // namespace
}  // namespace soak
