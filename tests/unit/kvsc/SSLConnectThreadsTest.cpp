#include <gtest/gtest.h>
#include <pthread.h>

#include <cstdlib>
#include <thread>
#include <vector>

#include "kvsc/OpenSsl.h"
#include "kvsc/SSLConnect.h"
#include "tests/support/LockWaiter.h"

namespace kvsc {
namespace {

constexpr int kUnlock = 2;

void exitUnless(bool condition, int code) {
  if (!condition) std::_Exit(code);
}

/// Each case runs in a process of its own, in which no connection has been made yet.
class FreshProcessTest : public testing::Test {
 protected:
  FreshProcessTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(FreshProcessTest, TheFirstConnectionSetsUpTheLocks) {
  const auto run = [] {
    exitUnless(!SSLConnect::isInitialized() && SSLConnect::getLockCount() == 0, 1);
    const SSLConnect one("LOCALHOST");
    exitUnless(
        SSLConnect::isInitialized() && SSLConnect::getLockCount() == std::size_t{kCryptoLocks}, 2);
    const SSLConnect two("LOCALHOST");
    exitUnless(SSLConnect::getLockCount() == std::size_t{kCryptoLocks}, 3);
    std::_Exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST_F(FreshProcessTest, ManyFirstConnectionsSetThemUpOnce) {
  const auto run = [] {
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) threads.emplace_back([] { SSLConnect("LOCALHOST"); });
    for (std::thread& thread : threads) thread.join();
    exitUnless(SSLConnect::getLockCount() == std::size_t{kCryptoLocks}, 1);
    std::_Exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST_F(FreshProcessTest, AHostWithLockingOfItsOwnTakesItDownItself) {
  const auto run = [] {
    SSLConnect::setupThreads();
    SSLConnect::doNotSetupThreads();
    SSLConnect::cleanupThreads();
    exitUnless(SSLConnect::getLockCount() == std::size_t{kCryptoLocks}, 1);
    std::_Exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST_F(FreshProcessTest, AHostWithLockingOfItsOwnKeepsIt) {
  const auto run = [] {
    SSLConnect::doNotSetupThreads();
    const SSLConnect connect("LOCALHOST");
    exitUnless(!SSLConnect::getShouldSetupThreads() && SSLConnect::getLockCount() == 0, 1);
    SSLConnect::setupThreads();
    SSLConnect::cleanupThreads();
    exitUnless(SSLConnect::getLockCount() == 0, 2);
    std::_Exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST_F(FreshProcessTest, AfterTheFirstConnectionItIsTooLateForThat) {
  const auto run = [] {
    const SSLConnect connect("LOCALHOST");
    SSLConnect::doNotSetupThreads();
    exitUnless(SSLConnect::getShouldSetupThreads(), 1);
    std::_Exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST_F(FreshProcessTest, TheLocksAreTakenDownAndSetUpAgain) {
  const auto run = [] {
    const SSLConnect connect("LOCALHOST");
    SSLConnect::cleanupThreads();
    exitUnless(SSLConnect::getLockCount() == 0, 1);
    SSLConnect::lockingFunction(kCryptoLockBit, 0, "", 0);
    SSLConnect::setupThreads();
    exitUnless(SSLConnect::getLockCount() == std::size_t{kCryptoLocks}, 2);
    std::_Exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST_F(FreshProcessTest, AThreadThatWaitsForALockGoesOnWhenTheLocksAreTakenDown) {
  const auto run = [] {
    const SSLConnect connect("LOCALHOST");
    SSLConnect::lockingFunction(kCryptoLockBit, 0, "", 0);
    support::LockWaiter waiter([] { SSLConnect::lockingFunction(kCryptoLockBit, 0, "", 0); });
    exitUnless(waiter.isHeldUp(), 1);
    SSLConnect::cleanupThreads();
    waiter.join();
    SSLConnect::lockingFunction(kUnlock, 0, "", 0);
    std::_Exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST_F(FreshProcessTest, ALockThatWasHeldWhenTheyWereTakenDownIsNotMistakenForItsSuccessor) {
  const auto run = [] {
    const SSLConnect connect("LOCALHOST");
    SSLConnect::lockingFunction(kCryptoLockBit, 0, "", 0);
    SSLConnect::cleanupThreads();
    SSLConnect::setupThreads();
    std::thread([] { SSLConnect::lockingFunction(kCryptoLockBit, 0, "", 0); }).join();
    SSLConnect::lockingFunction(kUnlock, 0, "", 0);
    support::LockWaiter waiter([] { SSLConnect::lockingFunction(kCryptoLockBit, 0, "", 0); });
    exitUnless(waiter.isHeldUp(), 1);
    std::_Exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

/// What a lock is for: no thread disturbs another.
template <typename Lock, typename Unlock>
int countUnder(Lock lock, Unlock unlock) {
  constexpr int kRounds = 1000;
  int counter = 0;
  const auto work = [&] {
    for (int i = 0; i < kRounds; ++i) {
      lock();
      ++counter;
      unlock();
    }
  };
  std::thread other(work);
  work();
  other.join();
  return counter == 2 * kRounds ? 0 : counter;
}

TEST(LockingFunctionTest, ItLocksAndUnlocksByNumber) {
  const SSLConnect connect("LOCALHOST");
  EXPECT_EQ(countUnder([] { SSLConnect::lockingFunction(kCryptoLockBit | 4, 0, "file", 1); },
                       [] { SSLConnect::lockingFunction(kUnlock | 4, 0, "file", 1); }),
            0);
}

TEST(LockingFunctionTest, ANumberWithoutALockIsIgnored) {
  const SSLConnect connect("LOCALHOST");
  for (int n : {-1, 1'000'000}) {
    SSLConnect::lockingFunction(kCryptoLockBit, n, "", 0);
    SSLConnect::lockingFunction(kUnlock, n, "", 0);
  }
}

TEST(DynamicLockTest, ItLocksAndUnlocks) {
  auto* const lock = SSLConnect::dynCreateFunction("file", 1);
  EXPECT_EQ(countUnder([&] { SSLConnect::dynLockFunction(kCryptoLockBit, lock, "file", 1); },
                       [&] { SSLConnect::dynLockFunction(kUnlock, lock, "file", 1); }),
            0);
  SSLConnect::dynDestroyFunction(lock, "file", 1);
}

TEST(DynamicLockTest, NoLockIsIgnored) {
  SSLConnect::dynLockFunction(kCryptoLockBit, nullptr, "", 0);
  SSLConnect::dynDestroyFunction(nullptr, "", 0);
}

TEST(IdFunctionTest, EachThreadHasItsNumber) {
  EXPECT_EQ(SSLConnect::idFunction(), static_cast<unsigned long>(pthread_self()));
  unsigned long other = 0;
  std::thread([&] { other = SSLConnect::idFunction(); }).join();
  EXPECT_NE(other, SSLConnect::idFunction());
}

}  // namespace
}  // namespace kvsc
