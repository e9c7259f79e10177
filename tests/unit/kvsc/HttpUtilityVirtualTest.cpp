#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "kvpm/File.h"
#include "kvsc/HttpUtilityVirtual.h"
#include "tests/support/LockWaiter.h"
#include "tests/support/TempDir.h"
#include "tests/unit/kvsc/NoMemory.h"

namespace kvsc {
namespace {

/// A new array for a utility to own.
unsigned char* newArray(const std::string& text) {
  auto* array = new unsigned char[text.size()];
  text.copy(reinterpret_cast<char*>(array), text.size());
  return array;
}

/// The text of an array that a utility returned, which is released.
std::string take(unsigned char* data, int length) {
  std::string text(reinterpret_cast<const char*>(data), static_cast<std::size_t>(length));
  HttpUtilityVirtual::release(data);
  return text;
}

/// Collects, and finds every response good.
class Collector : public HttpUtilityVirtual {
 public:
  HttpErrorIds get(const std::string& /*url*/) override { return HTTP_ERROR_FAILED; }
  HttpErrorIds post(const std::string& /*url*/, const std::string& /*data*/) override {
    return HTTP_ERROR_FAILED;
  }
  std::string parseResponse(const unsigned char* /*data*/, int /*length*/) override { return {}; }

  std::string buffer() const {
    int length = -1;
    unsigned char* data = getBuffer(&length);
    return take(data, length);
  }
  std::string utf8() const {
    const UTF8Data data = getUTF8Data();
    return take(data.data, data.length);
  }
};

using Callback = std::size_t (*)(void*, std::size_t, std::size_t, void*);

std::size_t deliver(Callback callback, std::string text, HttpUtilityVirtual* utility) {
  return callback(text.data(), 1, text.size(), utility);
}

/// A callback and the way to what it has collected.
struct CollectingCase {
  const char* name;
  Callback callback;
  std::string (*collected)(const Collector&);
};

void PrintTo(const CollectingCase& c, std::ostream* out) { *out << c.name; }

class Collecting : public testing::TestWithParam<CollectingCase> {
 protected:
  std::size_t deliverPiece(const std::string& text) {
    return deliver(GetParam().callback, text, &collector_);
  }
  std::string collected() const { return GetParam().collected(collector_); }

  Collector collector_;
};

TEST_P(Collecting, StartsWithNothing) { EXPECT_EQ(collected(), ""); }

TEST_P(Collecting, AppendsEveryPiece) {
  EXPECT_EQ(deliverPiece("abc"), 3U);
  EXPECT_EQ(deliverPiece(std::string("\0\xff", 2)), 2U);
  EXPECT_EQ(deliverPiece("d"), 1U);
  EXPECT_EQ(collected(), std::string("abc\0\xff"
                                     "d",
                                     6));
}

TEST_P(Collecting, CountsSizeTimesCount) {
  std::string text = "abcdef";
  EXPECT_EQ(GetParam().callback(text.data(), 2, 3, &collector_), 6U);
  EXPECT_EQ(collected(), "abcdef");
}

TEST_P(Collecting, TakesAnEmptyPiece) {
  EXPECT_EQ(GetParam().callback(nullptr, 1, 0, &collector_), 0U);
  EXPECT_EQ(collected(), "");
}

TEST_P(Collecting, RefusesAPieceTooLargeForMemory) {
  deliverPiece("abc");
  std::string text = "x";
  EXPECT_EQ(GetParam().callback(text.data(), SIZE_MAX / 2, 3, &collector_), 0U);
  EXPECT_EQ(GetParam().callback(text.data(), SIZE_MAX, 1, &collector_), 0U);
  EXPECT_EQ(collected(), "abc");
}

TEST_P(Collecting, TakesNothingWithoutAUtility) {
  EXPECT_EQ(deliver(GetParam().callback, "abc", nullptr), 0U);
}

/// What a reader on another thread sees is always a whole number of pieces.
TEST_P(Collecting, MayBeReadWhileItGoesOn) {
  std::thread transfer([this] {
    for (int piece = 0; piece < 500; ++piece) deliverPiece("0123456789");
  });
  std::size_t seen = 0;
  while (seen < 5000) {
    const std::string now = collected();
    ASSERT_GE(now.size(), seen);
    ASSERT_EQ(now.size() % 10, 0U);
    seen = now.size();
  }
  transfer.join();
}

TEST_P(Collecting, WaitsForTheHolderOfTheMutex) {
  std::size_t taken = 0;
  std::optional<support::LockWaiter> delivery;
  {
    const kvpm::MutexLock lock(collector_.getMutex());
    delivery.emplace([&] { taken = deliverPiece("late"); });
    EXPECT_TRUE(delivery->isHeldUp());
  }
  delivery->join();
  EXPECT_EQ(taken, 4U);
  EXPECT_EQ(collected(), "late");
}

TEST_P(Collecting, MayBeReadByTheHolderOfTheMutex) {
  deliverPiece("before");
  std::string seen;
  int relayed = 0;
  std::optional<support::LockWaiter> reader;
  {
    const kvpm::MutexLock lock(collector_.getMutex());
    reader.emplace([&] {
      seen = collected();
      collector_.setBuffer(nullptr, 0);
      relayed = HttpUtilityVirtual::progressFunction(&collector_, 0, 1, 0, 0);
    });
    // Held up, it could only be waiting for this thread.
    EXPECT_FALSE(reader->isHeldUp());
  }
  reader->join();
  EXPECT_EQ(seen, "before");
  EXPECT_EQ(relayed, -1);
}

INSTANTIATE_TEST_SUITE_P(
    Callbacks, Collecting,
    testing::Values(CollectingCase{"buffer", &HttpUtilityVirtual::writeMemoryCallback,
                                   [](const Collector& c) { return c.buffer(); }},
                    CollectingCase{"UTF-8", &HttpUtilityVirtual::writeUTF8MemoryCallback,
                                   [](const Collector& c) { return c.utf8(); }},
                    CollectingCase{"headers", &HttpUtilityVirtual::writeheadersCallback,
                                   [](const Collector& c) { return c.getHeaders(); }}));

TEST(CollectingWithoutMemory, TakesNothing) {
  Collector collector;
  deliver(&HttpUtilityVirtual::writeMemoryCallback, "abc", &collector);
  deliver(&HttpUtilityVirtual::writeUTF8MemoryCallback, "def", &collector);
  {
    const NoMemory noMemory;
    EXPECT_EQ(deliver(&HttpUtilityVirtual::writeMemoryCallback, "x", &collector), 0U);
    EXPECT_EQ(deliver(&HttpUtilityVirtual::writeUTF8MemoryCallback, "x", &collector), 0U);
    int length = -1;
    EXPECT_EQ(collector.getBuffer(&length), nullptr);
    EXPECT_EQ(length, 0);
  }
  EXPECT_EQ(collector.buffer(), "abc");
  EXPECT_EQ(collector.utf8(), "def");
}

TEST(Buffer, IsOwnedAndReplaced) {
  Collector collector;
  collector.setBuffer(newArray("first"), 5);
  collector.setBuffer(newArray("second"), 6);
  EXPECT_EQ(collector.buffer(), "second");
  EXPECT_EQ(deliver(&HttpUtilityVirtual::writeMemoryCallback, "!", &collector), 1U);
  EXPECT_EQ(collector.buffer(), "second!");
}

TEST(Buffer, IsClearedByNull) {
  Collector collector;
  collector.setBuffer(newArray("first"), 5);
  collector.setBuffer(nullptr, 0);
  int length = -1;
  EXPECT_EQ(collector.getBuffer(&length), nullptr);
  EXPECT_EQ(length, 0);
}

TEST(Buffer, IgnoresAnImpossibleLength) {
  Collector collector;
  collector.setBuffer(nullptr, 7);
  EXPECT_EQ(collector.buffer(), "");
  collector.setBuffer(newArray("x"), -1);
  EXPECT_EQ(collector.buffer(), "");
}

TEST(Utf8Data, IsOwnedAndReplaced) {
  Collector collector;
  collector.setUTF8Data({newArray("first"), 5});
  collector.setUTF8Data({newArray("second"), 6});
  EXPECT_EQ(collector.utf8(), "second");
  collector.setUTF8Data({});
  EXPECT_EQ(collector.getUTF8Data().data, nullptr);
}

TEST(Collected, IsReturnedAsACopy) {
  Collector collector;
  collector.setBuffer(newArray("first"), 5);
  int length = 0;
  unsigned char* copy = collector.getBuffer(&length);
  collector.setBuffer(nullptr, 0);
  EXPECT_EQ(take(copy, length), "first");
}

TEST(Fields, KeepWhatWasSet) {
  Collector collector;
  int context = 0;
  const auto progress = [](void*, double, double) { return 0; };
  EXPECT_EQ(collector.getResponseType(), "text/xml");
  EXPECT_EQ(collector.getCancelled(), 0);
  EXPECT_EQ(collector.getProgress(), nullptr);
  EXPECT_EQ(collector.getProgressContext(), nullptr);
  EXPECT_EQ(collector.getAmountDownloadedSoFar(), 0.0);
  EXPECT_EQ(collector.getTotalAmountToDownload(), 0.0);
  collector.setResponseType("text/plain");
  collector.setHeaders("A: 1\r\n");
  collector.setCancelled(-1);
  collector.setProgress(progress);
  collector.setProgressContext(&context);
  collector.setAmountDownloadedSoFar(12.5);
  collector.setTotalAmountToDownload(100);
  EXPECT_EQ(collector.getResponseType(), "text/plain");
  EXPECT_EQ(collector.getHeaders(), "A: 1\r\n");
  EXPECT_EQ(collector.getCancelled(), -1);
  EXPECT_EQ(collector.getProgress(), static_cast<HttpUtilityVirtual::Progress>(progress));
  EXPECT_EQ(collector.getProgressContext(), &context);
  EXPECT_EQ(collector.getAmountDownloadedSoFar(), 12.5);
  EXPECT_EQ(collector.getTotalAmountToDownload(), 100.0);
}

class MultiWriteFile : public testing::Test {
 protected:
  support::TempDir folder_;
};

TEST_F(MultiWriteFile, AppendsToTheFile) {
  kvpm::File file;
  const auto path = folder_ / "body";
  ASSERT_EQ(file.open(path.wstring(), kvpm::FileOpenWrite), 0);
  std::string text("a\0bcdef", 7);
  EXPECT_EQ(HttpUtilityVirtual::multiWriteFile(text.data(), 1, 3, &file), 3U);
  EXPECT_EQ(HttpUtilityVirtual::multiWriteFile(text.data() + 3, 2, 2, &file), 4U);
  ASSERT_EQ(file.close(), 0);
  EXPECT_EQ(support::readFile(path), text);
}

TEST_F(MultiWriteFile, TakesNothingThatTheFileDoesNot) {
  kvpm::File closed;
  std::string text = "abc";
  EXPECT_EQ(HttpUtilityVirtual::multiWriteFile(text.data(), 1, 3, &closed), 0U);
}

// In a process of its own, as what limits its files limits its reports, too.
TEST_F(MultiWriteFile, TakesNothingWhenTheFileTakesAPart) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto run = [this] {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit sixtyBytes{60, 60};
    kvpm::File file;
    if (setrlimit(RLIMIT_FSIZE, &sixtyBytes) != 0) std::_Exit(1);
    if (file.open((folder_ / "body").wstring(), kvpm::FileOpenWrite) != 0) std::_Exit(2);
    std::string text(100, 'x');
    if (HttpUtilityVirtual::multiWriteFile(text.data(), 1, 100, &file) != 0) std::_Exit(3);
    std::filesystem::remove_all(folder_.path());  // that of this process
    std::_Exit(file.getTotalSize() == 60 ? 0 : 4);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST_F(MultiWriteFile, SaysSoWithoutAFile) {
  std::string text = "abc";
  testing::internal::CaptureStdout();
  EXPECT_EQ(HttpUtilityVirtual::multiWriteFile(text.data(), 1, 3, nullptr), 0U);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "No valid stream provided for writing\n");
}

/// What the relay was told, and what it answers.
struct Relay {
  static int told(void* context, double downloaded, double total) {
    auto* relay = static_cast<Relay*>(context);
    relay->calls.emplace_back(downloaded, total);
    if (relay->asked != nullptr) relay->asked->setCancelled(1);
    return relay->answer;
  }

  std::vector<std::pair<double, double>> calls;
  int answer = 0;
  HttpUtilityVirtual* asked = nullptr;
};

TEST(ProgressFunction, CancelsWithoutARelay) {
  Collector collector;
  EXPECT_EQ(HttpUtilityVirtual::progressFunction(&collector, 0, 1, 0, 0), -1);
  EXPECT_EQ(HttpUtilityVirtual::progressFunction(nullptr, 0, 1, 0, 0), -1);
  EXPECT_EQ(collector.getProgressResult(), 0);
}

TEST(ProgressFunction, AddsWhatCameBeforeAndNamesTheOwnersTotal) {
  Collector collector;
  Relay relay;
  relay.answer = 7;
  collector.setProgress(&Relay::told);
  collector.setProgressContext(&relay);
  collector.setAmountDownloadedSoFar(1000);
  collector.setTotalAmountToDownload(5000);
  EXPECT_EQ(HttpUtilityVirtual::progressFunction(&collector, 9, 24, 8, 7), 7);
  EXPECT_EQ(relay.calls, (std::vector<std::pair<double, double>>{{1024, 5000}}));
  EXPECT_EQ(collector.getProgressResult(), 7);
}

TEST(ProgressFunction, LetsTheRelayCallTheUtility) {
  Collector collector;
  Relay relay;
  relay.asked = &collector;
  collector.setProgress(&Relay::told);
  collector.setProgressContext(&relay);
  EXPECT_EQ(HttpUtilityVirtual::progressFunction(&collector, 0, 1, 0, 0), 0);
  EXPECT_EQ(collector.getCancelled(), 1);
}

}  // namespace
}  // namespace kvsc
