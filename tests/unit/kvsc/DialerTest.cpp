#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <map>
#include <memory>
#include <thread>

#include "kvsc/CancelToken.h"
#include "kvsc/Dialer.h"
#include "kvsc/OpenSsl.h"
#include "kvsc/UniqueFd.h"
#include "kvsc/Waiter.h"
#include "tests/support/Gate.h"
#include "tests/support/Loopback.h"
#include "tests/support/WaitFor.h"
#include "tests/unit/kvsc/WaitLimits.h"

namespace kvsc {
namespace {

using Milliseconds = Waiter::Milliseconds;

/// A look-up with a ready answer.
class ReadyLookup : public NameLookup {
 public:
  explicit ReadyLookup(Addresses answer) : answer_(std::move(answer)) {}
  bool waitFor(Milliseconds) override { return true; }
  Addresses take(int* error) override {
    *error = answer_ ? 0 : EAI_NONAME;
    return std::move(answer_);
  }

 private:
  Addresses answer_;
};

/// A look-up that never ends.
class HangingLookup : public NameLookup {
 public:
  explicit HangingLookup(support::Gate& asked) { asked.open(); }
  bool waitFor(Milliseconds limit) override {
    never_.wait(limit);
    return false;
  }
  Addresses take(int*) override { return nullptr; }

 private:
  support::Gate never_;
};

/// The addresses in numbers, as one answer. Each part is freed by itself, so that the list may be
/// put together here.
class ListedLookup : public NameLookup {
 public:
  ListedLookup(Addresses first, Addresses second)
      : first_(std::move(first)), second_(std::move(second)) {
    first_->ai_next = second_.get();
  }
  ~ListedLookup() override = default;
  bool waitFor(Milliseconds) override { return true; }
  Addresses take(int* error) override {
    *error = 0;
    second_.release();
    return std::move(first_);
  }

 private:
  Addresses first_;
  Addresses second_;
};

std::string takeErrorText() {
  const char* file = nullptr;
  const char* data = "";
  int line = 0;
  int flags = 0;
  const unsigned long code = takeError(&file, &line, &data, &flags);
  if (code == 0) return "";
  const std::string text = data;
  char reason[256];
  ERR_error_string_n(code, reason, sizeof reason);
  return text + " " + reason;
}

class DialerTest : public testing::Test {
 protected:
  DialerTest() { ERR_clear_error(); }

  UniqueFd dial(const std::string& host, const std::string& port,
                StartNameLookup lookup = startSystemLookup) {
    return UniqueFd(TcpDialer(std::move(lookup)).dial(host, port, waiter_));
  }

  std::string serverPort() { return std::to_string(support::localPort(server_.get())); }

  support::UniqueFd server_ = support::listenOnLoopback();
  CancelToken token_;
  Waiter waiter_{&token_, kLong, kLong};
};

TEST_F(DialerTest, AnAddressInNumbersIsReachedWithoutALookup) {
  const auto noLookup = [](const std::string&) -> std::unique_ptr<NameLookup> {
    ADD_FAILURE() << "looked up";
    return std::make_unique<ReadyLookup>(nullptr);
  };
  EXPECT_TRUE(dial("127.0.0.1", serverPort(), noLookup));
  EXPECT_EQ(takeErrorText(), "");
}

TEST_F(DialerTest, ANameIsReachedThroughItsAddresses) {
  const auto lookup = [](const std::string& host) {
    EXPECT_EQ(host, "films.example");
    return std::make_unique<ReadyLookup>(numericAddress("127.0.0.1"));
  };
  EXPECT_TRUE(dial("films.example", serverPort(), lookup));
  EXPECT_TRUE(dial("localhost", serverPort()));
}

TEST_F(DialerTest, TheSocketNeitherBlocksNorDelays) {
  const UniqueFd fd = dial("127.0.0.1", serverPort());
  EXPECT_NE(fcntl(fd.get(), F_GETFL) & O_NONBLOCK, 0);
  EXPECT_NE(fcntl(fd.get(), F_GETFD) & FD_CLOEXEC, 0);
  int noDelay = 0;
  socklen_t size = sizeof noDelay;
  ASSERT_EQ(getsockopt(fd.get(), IPPROTO_TCP, TCP_NODELAY, &noDelay, &size), 0);
  EXPECT_NE(noDelay, 0);
}

TEST_F(DialerTest, ARefusedConnectionHasItsReason) {
  const support::RefusingPort refusing;
  const std::string port = std::to_string(refusing.port());
  EXPECT_FALSE(dial("127.0.0.1", port));
  EXPECT_EQ(takeErrorText(), "connecting to 127.0.0.1:" + port +
                                 " error:8000006F:system library::Connection refused");
  EXPECT_EQ(takeErrorText(), "");
}

TEST_F(DialerTest, TheNextAddressIsTriedAndLeavesNoTraceOfTheFirst) {
  const auto lookup = [](const std::string&) {
    return std::make_unique<ListedLookup>(numericAddress("127.0.0.2"), numericAddress("127.0.0.1"));
  };
  EXPECT_TRUE(dial("two.example", serverPort(), lookup));
  EXPECT_EQ(takeErrorText(), "");
}

TEST_F(DialerTest, AnIpv6LiteralIsAnAddressWithBracketsOrWithout) {
  const UniqueFd server(socket(AF_INET6, SOCK_STREAM, 0));
  sockaddr_in6 address{};
  address.sin6_family = AF_INET6;
  address.sin6_addr = in6addr_loopback;
  socklen_t size = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  ASSERT_EQ(bind(server.get(), generic, size), 0);
  ASSERT_EQ(listen(server.get(), 4), 0);
  ASSERT_EQ(getsockname(server.get(), generic, &size), 0);
  const std::string port = std::to_string(ntohs(address.sin6_port));
  EXPECT_TRUE(dial("::1", port));
  EXPECT_TRUE(dial("[::1]", port));
}

TEST_F(DialerTest, AnEmptyNameIsNotThisMachine) {
  EXPECT_FALSE(dial("", serverPort()));
  EXPECT_NE(takeErrorText().find("no such host"), std::string::npos);
  EXPECT_FALSE(dial("[]", serverPort()));
}

TEST_F(DialerTest, AZeroByteDoesNotEndTheName) {
  EXPECT_FALSE(dial(std::string("localhost\0.evil", 15), serverPort()));
  EXPECT_NE(takeErrorText().find("no such host"), std::string::npos);
}

TEST_F(DialerTest, AnUnknownNameHasItsReason) {
  const auto unknown = [](const std::string&) { return std::make_unique<ReadyLookup>(nullptr); };
  EXPECT_FALSE(dial("no.example", serverPort(), unknown));
  EXPECT_NE(takeErrorText().find("looking up no.example: Name or service not known"),
            std::string::npos);
}

TEST_F(DialerTest, AnUnknownPortIsNotDialled) {
  EXPECT_FALSE(dial("127.0.0.1", "-5"));
  EXPECT_NE(takeErrorText().find("no such port: -5"), std::string::npos);
  EXPECT_FALSE(dial("user", "secret@host"));
  EXPECT_EQ(takeErrorText().find("secret"), std::string::npos);
}

TEST_F(DialerTest, APasswordIsInNoReason) {
  EXPECT_FALSE(dial("127.0.0.1", "1secret@films.example"));
  EXPECT_NE(takeErrorText().find("connecting to 127.0.0.1:films.example "), std::string::npos);
}

TEST_F(DialerTest, AnAddressThatDoesNotAnswerHasALimitOfItsOwn) {
  const support::SilentPort silent;
  const std::string port = std::to_string(silent.port());
  waiter_ = Waiter(&token_, kSoon, kLong);
  EXPECT_FALSE(dial("127.0.0.1", port));
  EXPECT_EQ(takeErrorText(), "connecting to 127.0.0.1:" + port +
                                 " error:8000006E:system library::Connection timed out");
}

TEST_F(DialerTest, ACancelEndsAHangingConnect) {
  const support::SilentPort silent;
  std::thread other([this] { token_.cancel(); });
  EXPECT_FALSE(dial("127.0.0.1", std::to_string(silent.port())));
  other.join();
  EXPECT_EQ(waiter_.outcome(), Waiter::Outcome::kCancelled);
  EXPECT_NE(takeErrorText().find("Operation canceled"), std::string::npos);
}

TEST_F(DialerTest, ACancelIsTheReasonEvenAfterARefusal) {
  const support::SilentPort silent;
  const std::string port = std::to_string(silent.port());
  const auto refusingFirst = [](const std::string&) {
    return std::make_unique<ListedLookup>(numericAddress("127.0.0.2"), numericAddress("127.0.0.1"));
  };
  std::thread other([&] {
    support::waitFor([&] { return support::isConnecting(silent.port()); });
    token_.cancel();
  });
  EXPECT_FALSE(dial("two.example", port, refusingFirst));
  other.join();
  EXPECT_EQ(takeErrorText(), "connecting to two.example:" + port +
                                 " error:8000007D:system library::Operation canceled");
  EXPECT_EQ(takeErrorText(), "");
}

TEST_F(DialerTest, ACancelEndsAHangingLookup) {
  support::Gate asked;
  std::thread other([&] {
    asked.wait();
    token_.cancel();
  });
  const auto hanging = [&](const std::string&) { return std::make_unique<HangingLookup>(asked); };
  EXPECT_FALSE(dial("hanging.example", serverPort(), hanging));
  other.join();
  EXPECT_EQ(waiter_.outcome(), Waiter::Outcome::kCancelled);
  EXPECT_NE(takeErrorText().find("looking up hanging.example"), std::string::npos);
}

TEST_F(DialerTest, AHangingLookupHasALimit) {
  support::Gate asked;
  waiter_ = Waiter(&token_, kSoon, kLong);
  const auto hanging = [&](const std::string&) { return std::make_unique<HangingLookup>(asked); };
  EXPECT_FALSE(dial("hanging.example", serverPort(), hanging));
  EXPECT_EQ(waiter_.outcome(), Waiter::Outcome::kTimedOut);
}

TEST(ServicePortTest, ANumberOrTheNameOfASchemeIsAPort) {
  const struct {
    const char* what;
    std::map<std::string, int> ports;
  } rows[] = {
      {"digits", {{"1", 1}, {"8443", 8443}, {"08443", 8443}, {"65535", 65535}}},
      {"schemes", {{"http", 80}, {"https", 443}}},
      {"the first other character ends it", {{"8443x", 8443}, {"80 ", 80}, {"8.0", 8}}},
      {"blanks and a plus may come first", {{" 80", 80}, {"+80", 80}, {"\t +80", 80}}},
  };
  for (const auto& row : rows) {
    for (const auto& [text, port] : row.ports) EXPECT_EQ(servicePort(text), port) << row.what;
  }
}

TEST(ServicePortTest, EverythingElseIsNoPort) {
  for (const char* text : {"", "0", "-5", "65536", "4294967376", "99999999999999999999", "0x50",
                           " ", "+", "+-80", "x80", "no such service", "HTTPS!"}) {
    EXPECT_EQ(servicePort(text), std::nullopt) << text;
  }
}

TEST(ServicePortTest, AZeroByteIsNotTheEndOfTheName) {
  EXPECT_EQ(servicePort(std::string("https\0", 6)), std::nullopt);
  EXPECT_EQ(servicePort(std::string("80\0", 3)), std::nullopt);
}

}  // namespace
}  // namespace kvsc
