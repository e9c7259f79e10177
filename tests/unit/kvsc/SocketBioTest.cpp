#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>

#include "kvsc/CancelToken.h"
#include "kvsc/OpenSsl.h"
#include "kvsc/SocketBio.h"
#include "kvsc/UniqueFd.h"
#include "tests/unit/kvsc/FailingPoll.h"
#include "tests/unit/kvsc/WaitLimits.h"

namespace kvsc {
namespace {

using Milliseconds = Waiter::Milliseconds;

/// A BIO over one end of a stream whose other end is the test's.
class SocketBioTest : public testing::Test {
 protected:
  SocketBioTest() {
    std::array<int, 2> ends{};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
    EXPECT_EQ(fcntl(ends[0], F_SETFL, O_NONBLOCK), 0);
    far_ = UniqueFd(ends[1]);
    useWaiter(Waiter(&token_, kNever, kNever), ends[0]);
    ERR_clear_error();
  }

  void useWaiter(const Waiter& waiter, int fd = -1) {
    if (fd < 0) {
      *waiterOf(bio_.get()) = waiter;
    } else {
      bio_ = newSocketBio(fd, waiter);
    }
  }

  void fromFar(const std::string& bytes) {
    EXPECT_EQ(write(far_.get(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }

  std::string read(int size = 100) {
    std::string bytes(static_cast<std::size_t>(size), '\0');
    count_ = BIO_read(bio_.get(), bytes.data(), size);
    bytes.resize(count_ > 0 ? static_cast<std::size_t>(count_) : 0);
    return bytes;
  }

  static int takeErrno() {
    const unsigned long code = ERR_get_error();
    return ERR_GET_LIB(code) == ERR_LIB_SYS ? ERR_GET_REASON(code) : 0;
  }

  CancelToken token_;
  UniqueFd far_;
  BioPtr bio_;
  int count_ = 0;
};

TEST_F(SocketBioTest, AReadBringsWhatIsThere) {
  fromFar("hello");
  EXPECT_EQ(read(), "hello");
  fromFar("hello");
  EXPECT_EQ(read(2), "he");
  EXPECT_EQ(read(), "llo");
}

TEST_F(SocketBioTest, AReadWaitsUntilSomethingComes) {
  std::thread other([this] { fromFar("late"); });
  EXPECT_EQ(read(), "late");
  other.join();
}

TEST_F(SocketBioTest, TheEndOfTheStreamIsZero) {
  fromFar("end");
  far_ = UniqueFd();
  EXPECT_EQ(BIO_eof(bio_.get()), 0);
  EXPECT_EQ(read(), "end");
  EXPECT_EQ(read(), "");
  EXPECT_EQ(count_, 0);
  EXPECT_EQ(BIO_eof(bio_.get()), 1);
  EXPECT_EQ(ERR_peek_error(), 0UL);
}

TEST_F(SocketBioTest, AWriteSendsEverythingHoweverSlowlyItIsTaken) {
  const std::string bytes(4 << 20, 'x');
  std::size_t taken = 0;
  std::thread reader([&] {
    std::array<char, 65'536> piece{};
    while (taken < bytes.size()) {
      const ssize_t count = ::read(far_.get(), piece.data(), piece.size());
      if (count <= 0) break;
      taken += static_cast<std::size_t>(count);
    }
  });
  EXPECT_EQ(BIO_write(bio_.get(), bytes.data(), static_cast<int>(bytes.size())),
            static_cast<int>(bytes.size()));
  reader.join();
  EXPECT_EQ(taken, bytes.size());
}

TEST_F(SocketBioTest, AReadHasALimit) {
  useWaiter(Waiter(&token_, kSoon, kNever));
  read();
  EXPECT_EQ(count_, -1);
  EXPECT_FALSE(BIO_should_retry(bio_.get()));
  EXPECT_EQ(takeErrno(), ETIMEDOUT);
}

TEST_F(SocketBioTest, ATextIsSentWithoutItsEnd) {
  EXPECT_EQ(BIO_puts(bio_.get(), "hello"), 5);
  std::string sent(6, '\0');
  EXPECT_EQ(::recv(far_.get(), sent.data(), sent.size(), 0), 5);
  EXPECT_STREQ(sent.c_str(), "hello");
}

TEST_F(SocketBioTest, AWriteHasALimit) {
  useWaiter(Waiter(&token_, kSoon, kNever));
  const std::string bytes(16 << 20, 'x');
  EXPECT_EQ(BIO_write(bio_.get(), bytes.data(), static_cast<int>(bytes.size())), -1);
  EXPECT_EQ(takeErrno(), ETIMEDOUT);
}

TEST_F(SocketBioTest, ACancelEndsARead) {
  std::thread other([this] { token_.cancel(); });
  read();
  other.join();
  EXPECT_EQ(count_, -1);
  EXPECT_EQ(takeErrno(), ECANCELED);
}

TEST_F(SocketBioTest, ACancelPrecedesAnAvailableEvent) {
  fromFar("more");
  token_.cancel();
  EXPECT_EQ(read(), "");
  EXPECT_EQ(count_, -1);
}

TEST_F(SocketBioTest, AnEndlessStreamOfSingleBytesEndsAtTheTotalLimit) {
  useWaiter(Waiter(nullptr, kNever, kSoon));
  int reads = 0;
  do {
    fromFar("x");
    read();
    ++reads;
  } while (count_ > 0 && reads < 100'000'000);
  EXPECT_EQ(count_, -1);
  EXPECT_EQ(takeErrno(), ETIMEDOUT);
}

TEST_F(SocketBioTest, AWaitThatTheSystemRefusesIsAFailureWithItsError) {
  BIO* bio = bio_.get();
  char byte = 0;
  {
    const FailingPoll failing;
    EXPECT_EQ(BIO_read(bio, &byte, 1), -1);
  }
  EXPECT_EQ(takeErrno(), EINVAL);
}

TEST_F(SocketBioTest, AWriteToAGonePeerFailsWithoutASignal) {
  struct sigaction before {};
  struct sigaction deadly {};
  deadly.sa_handler = [](int) { std::_Exit(9); };
  ASSERT_EQ(sigaction(SIGPIPE, &deadly, &before), 0);
  far_ = UniqueFd();
  EXPECT_EQ(BIO_write(bio_.get(), "x", 1), -1);
  EXPECT_EQ(takeErrno(), EPIPE);
  ASSERT_EQ(sigaction(SIGPIPE, &before, nullptr), 0);
}

TEST_F(SocketBioTest, AStoppedWaiterStillSendsWhatGoesAtOnce) {
  waiterOf(bio_.get())->stopWaiting();
  EXPECT_EQ(BIO_write(bio_.get(), "bye", 3), 3);
  std::array<char, 3> taken{};
  EXPECT_EQ(::read(far_.get(), taken.data(), taken.size()), 3);
}

TEST_F(SocketBioTest, TheDescriptorIsClosedWithTheBio) {
  bio_.reset();
  char byte = 0;
  EXPECT_EQ(::read(far_.get(), &byte, 1), 0);
}

TEST_F(SocketBioTest, ItKnowsItsDescriptor) {
  int fd = -1;
  EXPECT_EQ(BIO_get_fd(bio_.get(), &fd), fd);
  EXPECT_GE(fd, 0);
  EXPECT_EQ(BIO_flush(bio_.get()), 1);
}

TEST_F(SocketBioTest, OnlyThisKindHasAWaiter) {
  EXPECT_NE(waiterOf(bio_.get()), nullptr);
  const BioPtr memory(BIO_new(BIO_s_mem()));
  EXPECT_EQ(waiterOf(memory.get()), nullptr);
  EXPECT_EQ(waiterOf(nullptr), nullptr);
  EXPECT_EQ(bytesSentBy(memory.get()), 0);
}

TEST_F(SocketBioTest, AFailedWriteReportsTheBytesSent) {
  EXPECT_EQ(BIO_write(bio_.get(), "whole", 5), 5);
  EXPECT_EQ(bytesSentBy(bio_.get()), 5);
  useWaiter(Waiter(&token_, kSoon, kNever));
  const std::string bytes(16 << 20, 'x');
  EXPECT_EQ(BIO_write(bio_.get(), bytes.data(), static_cast<int>(bytes.size())), -1);
  EXPECT_GT(bytesSentBy(bio_.get()), 0);
  EXPECT_LT(bytesSentBy(bio_.get()), static_cast<int>(bytes.size()));
}

TEST_F(SocketBioTest, AChainIsSearchedForIt) {
  BIO* buffer = BIO_new(BIO_f_buffer());
  Waiter* waiter = waiterOf(bio_.get());
  bio_.reset(BIO_push(buffer, bio_.release()));
  EXPECT_EQ(waiterOf(bio_.get()), waiter);
}

}  // namespace
}  // namespace kvsc
