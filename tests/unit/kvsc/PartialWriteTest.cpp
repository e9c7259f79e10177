// A request whose bytes the system takes in pieces, with passing failures between them.
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "tests/support/ScriptedServer.h"
#include "tests/unit/kvsc/TlsTesting.h"

namespace {

/// Bytes to take before a failure, for each failure to come on this thread.
thread_local std::vector<std::size_t> pieces;
thread_local bool failsNext = false;

}  // namespace

extern "C" {

ssize_t __real_send(int fd, const void* data, std::size_t size, int flags);
ssize_t __wrap_send(int fd, const void* data, std::size_t size, int flags) {
  if (pieces.empty()) return __real_send(fd, data, size, flags);
  const std::size_t piece = failsNext ? 0 : std::min(pieces.front(), size);
  failsNext = piece > 0;
  if (failsNext) return __real_send(fd, data, piece, flags);
  pieces.erase(pieces.begin());
  errno = ENOBUFS;
  return -1;
}

}  // extern "C"

namespace {

using support::Script;

class PartialWriteTest : public testing::Test {
 protected:
  PartialWriteTest() { server_.next(Script::answer(support::okResponse("film"))); }
  ~PartialWriteTest() override { pieces.clear(); }

  Outcome getInPieces(const std::vector<std::size_t>& sizes) {
    pieces = sizes;
    return client_.get(server_.url("/", "127.0.0.1"));
  }

  support::ScriptedServer server_;
  PlainClient client_;
};

const char* const kRequest = "GET / HTTP/1.0\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n";

TEST_F(PartialWriteTest, ARequestThatWasSentInPartIsContinued) {
  EXPECT_EQ(getInPieces({7}), kSuccess);
  EXPECT_EQ(server_.ended().received, kRequest);
}

TEST_F(PartialWriteTest, ItIsContinuedAsOftenAsItIsCutShort) {
  EXPECT_EQ(getInPieces({1, 20, 3}), kSuccess);
  EXPECT_EQ(server_.ended().received, kRequest);
}

TEST_F(PartialWriteTest, ARequestOfWhichNothingWasSentBeginsAtItsStart) {
  EXPECT_EQ(getInPieces({0}), kSuccess);
  EXPECT_EQ(server_.ended().received, kRequest);
}

TEST_F(PartialWriteTest, TheTenthFailureIsTheLast) {
  EXPECT_EQ(getInPieces(std::vector<std::size_t>(10, 1)),
            (Outcome{kvsc::HTTP_ERROR_FAILED, "SSLClient::writeData failed."}));
  EXPECT_EQ(server_.ended().received, std::string(kRequest, 10));
}

}  // namespace
