#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <string>
#include <thread>

#include "playerx/platform/Descriptor.h"
#include "playerx/platform/FileIo.h"
#include "tests/support/TempDir.h"
#include "tests/support/WaitFor.h"

namespace {

using playerx::Descriptor;
using playerx::IoResult;

std::atomic<int> interruptions{0};

// Interrupts calls instead of having the system start them again.
class Interrupting {
 public:
  Interrupting() {
    struct sigaction action {};
    action.sa_handler = [](int) { ++interruptions; };
    ::sigaction(SIGUSR1, &action, &before_);
    interruptions = 0;
  }
  ~Interrupting() { ::sigaction(SIGUSR1, &before_, nullptr); }

 private:
  struct sigaction before_ {};
};

struct Pipe {
  Pipe() {
    std::array<int, 2> ends{};
    EXPECT_EQ(::pipe(ends.data()), 0);
    reading = Descriptor(ends[0]);
    writing = Descriptor(ends[1]);
  }
  Descriptor reading;
  Descriptor writing;
};

struct CopyRest : testing::Test {
  Descriptor open(const char* name, int flags) const {
    return Descriptor(::open((folder.path() / name).c_str(), flags | O_CLOEXEC, 0600));
  }
  support::TempDir folder;
};

TEST_F(CopyRest, BeginsAtThePositionOfEach) {
  folder.write("from", "0123456789");
  folder.write("to", "abc");
  const Descriptor from = open("from", O_RDONLY);
  const Descriptor to = open("to", O_WRONLY | O_APPEND);
  ::lseek(from.get(), 4, SEEK_SET);
  EXPECT_EQ(playerx::copyRest(from.get(), to.get()), 0);
  EXPECT_EQ(support::readFile(folder.path() / "to"), "abc456789");
}

TEST_F(CopyRest, CopiesNothingOnceItIsCancelled) {
  folder.write("from", "0123456789");
  const Descriptor from = open("from", O_RDONLY);
  const Descriptor to = open("to", O_WRONLY | O_CREAT);
  EXPECT_EQ(playerx::copyRest(from.get(), to.get(), true), ECANCELED);
  EXPECT_EQ(support::readFile(folder.path() / "to"), "");
}

TEST_F(CopyRest, TellsWhyAFileCannotBeWritten) {
  folder.write("from", "0123456789");
  const Descriptor from = open("from", O_RDONLY);
  EXPECT_EQ(playerx::copyRest(from.get(), from.get()), EBADF);
}

TEST(FileIo, ReadingContinuesAfterShortReadsAndInterruptions) {
  const Interrupting interrupting;
  Pipe pipe;
  std::string text(6, '#');
  IoResult result;
  std::thread reader(
      [&] { result = playerx::readFully(pipe.reading.get(), text.data(), text.size()); });
  for (const std::string piece : {"ab", "cd", "ef"}) {
    const int before = interruptions;
    ::pthread_kill(reader.native_handle(), SIGUSR1);
    EXPECT_TRUE(support::waitFor([&] { return interruptions > before; }));
    ASSERT_EQ(::write(pipe.writing.get(), piece.data(), 2), 2);
  }
  reader.join();
  EXPECT_EQ(result.bytes, 6U);
  EXPECT_EQ(result.error, 0);
  EXPECT_EQ(text, "abcdef");
}

TEST(FileIo, ReadingEndsAtTheEndOfTheFile) {
  Pipe pipe;
  ASSERT_EQ(::write(pipe.writing.get(), "abc", 3), 3);
  pipe.writing = Descriptor();
  std::array<char, 10> text{};
  const IoResult result = playerx::readFully(pipe.reading.get(), text.data(), text.size());
  EXPECT_EQ(result.bytes, 3U);
  EXPECT_EQ(result.error, 0);
}

TEST(FileIo, WritingContinuesAfterShortWritesAndInterruptions) {
  const Interrupting interrupting;
  Pipe pipe;
  const std::string text(1 << 20, 'w');  // far more than a pipe holds
  IoResult result;
  std::thread writer(
      [&] { result = playerx::writeFully(pipe.writing.get(), text.data(), text.size()); });
  std::string got(text.size(), '#');
  std::size_t count = 0;
  while (count < got.size()) {
    ::pthread_kill(writer.native_handle(), SIGUSR1);
    const ssize_t bytes = ::read(pipe.reading.get(), got.data() + count, got.size() - count);
    if (bytes > 0) count += static_cast<std::size_t>(bytes);
  }
  writer.join();
  EXPECT_EQ(result.bytes, text.size());
  EXPECT_EQ(got, text);
}

TEST(FileIo, FailuresHaveTheErrorNumberOfTheSystem) {
  std::array<char, 4> text{};
  EXPECT_EQ(playerx::readFully(-1, text.data(), text.size()).error, EBADF);
  EXPECT_EQ(playerx::writeFully(-1, text.data(), text.size()).error, EBADF);
}

TEST(FileIo, ZeroBytesAreNoFailure) {
  EXPECT_EQ(playerx::readFully(-1, nullptr, 0).error, 0);
  EXPECT_EQ(playerx::writeFully(-1, nullptr, 0).error, 0);
}

TEST(Descriptor, IsClosedByItsOwner) {
  Pipe pipe;
  const int number = pipe.reading.get();
  pipe.reading = Descriptor();
  EXPECT_EQ(::close(number), -1);
  EXPECT_EQ(errno, EBADF);
}

}  // namespace
