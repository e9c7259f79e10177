#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "kvsc/NameLookup.h"

namespace kvsc {
namespace {

constexpr std::chrono::milliseconds kSlice{10};

Addresses answerOf(const std::string& host, int* error, std::chrono::milliseconds slice = kSlice) {
  const auto lookup = startSystemLookup(host);
  while (!lookup->waitFor(slice)) continue;
  return lookup->take(error);
}

TEST(NumericAddressTest, AnAddressInNumbersIsRead) {
  ASSERT_NE(numericAddress("127.0.0.1"), nullptr);
  EXPECT_EQ(numericAddress("127.0.0.1")->ai_family, AF_INET);
  ASSERT_NE(numericAddress("::1"), nullptr);
  EXPECT_EQ(numericAddress("::1")->ai_family, AF_INET6);
  EXPECT_EQ(numericAddress("::1")->ai_socktype, SOCK_STREAM);
}

TEST(NumericAddressTest, ANameIsNotNumeric) {
  for (const char* name :
       {"localhost", "films.example", "[::1]", "127.0.0.1.example", "::1.example"}) {
    EXPECT_EQ(numericAddress(name), nullptr) << name;
  }
}

TEST(LocalhostTest, ItIsThisMachineInAnySpelling) {
  for (const char* name : {"localhost", "LocalHost", "localhost."}) {
    const Addresses addresses = localhostAddresses(name);
    ASSERT_NE(addresses, nullptr) << name;
    EXPECT_EQ(addresses->ai_family, AF_INET);
    ASSERT_NE(addresses->ai_next, nullptr);
    EXPECT_EQ(addresses->ai_next->ai_family, AF_INET6);
    EXPECT_EQ(addresses->ai_next->ai_next, nullptr);
  }
}

TEST(LocalhostTest, OtherNamesAreAskedFor) {
  for (const char* name : {"", ".", "localhost..", "localhost.example", "a.localhost", "local"}) {
    EXPECT_EQ(localhostAddresses(name), nullptr) << name;
  }
}

TEST(NameLookupTest, AKnownNameHasAddresses) {
  int error = -1;
  const Addresses found = answerOf("localhost", &error);
  EXPECT_EQ(error, 0);
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->ai_socktype, SOCK_STREAM);
}

TEST(NameLookupTest, AnUnknownNameHasAnError) {
  int error = 0;
  EXPECT_EQ(answerOf("no-such-host.invalid", &error), nullptr);
  EXPECT_NE(error, 0);
}

// The leak checker finds an answer that is not freed.
TEST(NameLookupTest, AnAnswerThatIsNotTakenIsFreed) {
  const auto lookup = startSystemLookup("localhost");
  while (!lookup->waitFor(kSlice)) continue;
}

// As above.
TEST(NameLookupTest, AnAbandonedLookupIsFreedByLaterOnes) {
  for (int i = 0; i < 50; ++i) startSystemLookup("localhost");
  int error = -1;
  EXPECT_NE(answerOf("localhost", &error), nullptr);
}

TEST(NameLookupTest, AnAnswerMayComeJustAsAWaitEnds) {
  for (int i = 0; i < 200; ++i) {
    int error = -1;
    EXPECT_NE(answerOf("localhost", &error, std::chrono::milliseconds(0)), nullptr);
  }
}

TEST(NameLookupTest, ManyThreadsMayAskAtOnce) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([] {
      int error = -1;
      EXPECT_NE(answerOf("localhost", &error), nullptr);
      startSystemLookup("localhost");
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace kvsc
