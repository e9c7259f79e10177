#include <gtest/gtest.h>
#include <malloc.h>

#include <filesystem>
#include <functional>
#include <string>

#include "tests/support/Loopback.h"
#include "tests/support/Nginx.h"
#include "tests/support/TinyProxy.h"
#include "tests/support/WaitFor.h"
#include "tests/unit/kvsc/TlsTesting.h"

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif
#else
constexpr bool kSanitized = false;
#endif

// A sanitizer finds the smallest leak in few exchanges, and needs ten times as long for each.
constexpr int kPlainExchanges = kSanitized ? 1'000 : 10'000;
constexpr int kTlsExchanges = kSanitized ? 60 : 1'000;
// What is made once and kept, caches and spare blocks of the allocator, is there after these.
constexpr int kWarmUp = kSanitized ? 10 : 500;
// The smallest block in each exchange would come to as much.
constexpr std::size_t kToleratedGrowth = 32 * 1024;

std::size_t entriesOf(const char* folder) {
  const std::filesystem::directory_iterator all(folder);
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

// Sanitizers bring an allocator of their own that does not keep this account; they look for leaks
// themselves.
std::size_t memoryInUse() {
  const auto account = mallinfo2();
  return kSanitized ? 0 : account.uordblks + account.hblkhd;
}

std::size_t threads() { return entriesOf("/proc/self/task"); }
std::size_t descriptors() { return entriesOf("/proc/self/fd"); }

/// Repeats the exchange until what is made once is there: until a batch leaves the memory as it
/// was, which one that leaks never does.
void warmUp(const std::function<void()>& exchange) {
  constexpr int kMostBatches = 6;
  bool hasGrown = true;
  for (int batch = 0; batch < kMostBatches && hasGrown; ++batch) {
    const std::size_t before = memoryInUse();
    for (int number = 0; number < kWarmUp; ++number) exchange();
    hasGrown = memoryInUse() > before;
  }
}

/// Runs the exchange `count` times, after some that are not counted, and compares what the process
/// uses. A thread that has looked up a name may take a moment to end.
void expectNothingKept(int count, const std::function<void()>& exchange) {
  const std::size_t threadsBefore = threads();
  warmUp(exchange);
  const std::size_t descriptorsBefore = descriptors();
  const std::size_t memoryBefore = memoryInUse();
  for (int number = 0; number < count; ++number) exchange();
  EXPECT_EQ(descriptors(), descriptorsBefore);
  EXPECT_LE(memoryInUse(), memoryBefore + kToleratedGrowth);
  EXPECT_TRUE(support::waitFor([&] { return threads() <= threadsBefore; })) << threads();
}

kvsc::HttpErrorIds headOnce(const std::string& url, bool check) {
  kvsc::SSLClient client("LOCALHOST");
  kvsc::SSLSession session;
  session.setCheckCertificate(check);
  kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_FAILED;
  client.httpHead(url, 0, &result, &session, "", "", kvsc::SSLV3);
  return result;
}

/// One client that is used again and again.
class RepeatedClient {
 public:
  explicit RepeatedClient(bool check = false) {
    session_.setCheckCertificate(check);
    session_.setMaxRedirectCount(1);
    client_.setProgressContext(this);
    client_.setProgressCallback([](void* self, double, double, double, double) {
      return static_cast<RepeatedClient*>(self)->cancels_ ? -1 : 0;
    });
  }

  void useProxy(std::uint16_t port) {
    session_.setProxyURL("127.0.0.1");
    session_.setProxyPort(port);
  }

  kvsc::HttpErrorIds get(const std::string& url, bool cancels = false) {
    cancels_ = cancels;
    session_.setRedirectCount(0);
    kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_FAILED;
    client_.httpGet(url, 0, &result, &session_, "", "", kvsc::SSLV3);
    return result;
  }

 private:
  kvsc::SSLClient client_{"LOCALHOST"};
  kvsc::SSLSession session_;
  bool cancels_ = false;
};

TEST(LongRunTest, PlainExchangesOfEveryOutcomeLeakNothing) {
  support::Nginx nginx({.serverSnippet = "location /moved { return 302 /film; }"});
  nginx.serve("film", std::string(10'000, 'x'));
  RepeatedClient client;
  int wrong = 0;
  expectNothingKept(kPlainExchanges, [&, number = 0]() mutable {
    ++number;
    if (number % 20 == 0) {
      wrong += client.get(nginx.url("/missing")) != kvsc::HTTP_ERROR_FAILED;
    } else if (number % 20 == 7) {
      wrong += client.get(nginx.url("/moved")) != kvsc::HTTP_ERROR_NONE;
    } else {
      const bool cancels = number % 20 == 14;
      wrong += client.get(nginx.url("/film"), cancels) !=
               (cancels ? kvsc::HTTP_ERROR_CANCELLED : kvsc::HTTP_ERROR_NONE);
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST(LongRunTest, TlsExchangesWithANewClientEachLeakNothing) {
  support::Nginx nginx({.tls = serverOf()});
  nginx.serve("film", "film");
  int wrong = 0;
  expectNothingKept(kTlsExchanges,
                    [&] { wrong += headOnce(nginx.url("/film"), true) != kvsc::HTTP_ERROR_NONE; });
  EXPECT_EQ(wrong, 0);
}

TEST(LongRunTest, TunnelledAndCancelledTlsExchangesLeakNothing) {
  support::Nginx nginx({.tls = serverOf()});
  const support::TinyProxy proxy;
  nginx.serve("film", std::string(10'000, 'x'));
  RepeatedClient client(true);
  client.useProxy(proxy.port());
  int wrong = 0;
  expectNothingKept(kTlsExchanges / 4, [&, cancels = false]() mutable {
    cancels = !cancels;
    wrong += client.get(nginx.url("/film"), cancels) !=
             (cancels ? kvsc::HTTP_ERROR_CANCELLED : kvsc::HTTP_ERROR_NONE);
  });
  EXPECT_EQ(wrong, 0);
}

TEST(LongRunTest, RefusedCertificatesLeakNothing) {
  support::Nginx nginx({.tls = support::pki::selfSigned()});
  int wrong = 0;
  expectNothingKept(kTlsExchanges / 4, [&] {
    wrong += headOnce(nginx.url("/film"), true) != kvsc::HTTP_ERROR_CERTIFICATE;
  });
  EXPECT_EQ(wrong, 0);
}

TEST(LongRunTest, RefusedConnectionsLeakNothing) {
  const support::RefusingPort refusing;
  const std::string url = support::loopbackUrl("http", "localhost", refusing.port(), "/");
  int wrong = 0;
  expectNothingKept(kTlsExchanges,
                    [&] { wrong += headOnce(url, false) != kvsc::HTTP_ERROR_FAILED; });
  EXPECT_EQ(wrong, 0);
}

}  // namespace
