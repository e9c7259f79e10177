// Input: options, one letter each, then the response of each connection in turn, separated by byte
// 0x1f; within a response byte 0x1e ends a read.
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <vector>

#include "kvsc/Dialer.h"
#include "kvsc/OpenSsl.h"
#include "kvsc/SSLClient.h"
#include "tests/fuzz/Fuzz.h"

namespace {

constexpr int kRedirects = 10;
constexpr std::size_t kMostHops = 51;
constexpr int kSocketBuffer = 1 << 20;
// Every error of the library is one line; a TLS handshake leaves a handful of them.
constexpr std::size_t kLongestErrorText = 4096;

/// Connects to servers that have said everything already, each in packets of one read.
class ScriptedDialer : public kvsc::Dialer {
 public:
  explicit ScriptedDialer(std::vector<std::string> responses) : responses_(std::move(responses)) {}

  ~ScriptedDialer() override {
    for (const int fd : farEnds_) ::close(fd);
  }

  int dial(const std::string&, const std::string&, kvsc::Waiter&) override {
    std::array<int, 2> ends{};
    if (farEnds_.size() >= responses_.size()) return refuse();
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) return refuse();
    ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
    ::setsockopt(ends[1], SOL_SOCKET, SO_SNDBUF, &kSocketBuffer, sizeof kSocketBuffer);
    say(ends[1], responses_[farEnds_.size()]);
    farEnds_.push_back(ends[1]);
    return ends[0];
  }

  std::size_t dialled() const { return farEnds_.size(); }

 private:
  static int refuse() {
    kvsc::raiseLookupError("nobody is there");
    return -1;
  }

  static void say(int fd, const std::string& response) {
    for (std::size_t begin = 0; begin < response.size();) {
      const std::size_t end = std::min(response.find('\x1e', begin), response.size());
      const std::size_t length = end - begin;
      if (length > 0) ::send(fd, response.data() + begin, length, MSG_NOSIGNAL | MSG_DONTWAIT);
      begin = end + 1;
    }
    ::shutdown(fd, SHUT_WR);
  }

  const std::vector<std::string> responses_;
  std::vector<int> farEnds_;
};

struct Exchange {
  bool has(char option) const { return options.find(option) != std::string::npos; }

  std::string options;
  std::vector<std::string> responses;
};

Exchange exchangeIn(const std::uint8_t* data, std::size_t size) {
  fuzz::Fields fields(data, size);
  Exchange exchange;
  exchange.options = fields.next();
  for (std::string response = fields.next(); !response.empty(); response = fields.next()) {
    exchange.responses.push_back(response);
  }
  return exchange;
}

/// What the callbacks were given.
struct Delivered {
  std::size_t bytes = 0;
  bool cancel = false;
};

std::size_t deliver(void* data, std::size_t size, std::size_t count, void* context) {
  volatile unsigned char last = 0;
  for (std::size_t i = 0; i < count; ++i) last = static_cast<unsigned char*>(data)[i];
  static_cast<Delivered*>(context)->bytes += size * count + 0 * last;
  return count;
}

int progress(void* context, double, double, double, double) {
  return static_cast<Delivered*>(context)->cancel ? -1 : 0;
}

void prepare(kvsc::SSLClient& client, const Exchange& exchange, Delivered& delivered) {
  delivered.cancel = exchange.has('c');
  client.setErrorString("");
  client.setTotalDownloaded(0);
  client.setHeaderCallback(deliver);
  client.setBodyCallback(deliver);
  client.setFileWriteCallback(deliver);
  client.setProgressCallback(progress);
  client.setHeaderContext(&delivered);
  client.setBodyContext(&delivered);
  client.setFileContext(exchange.has('f') ? &delivered : nullptr);
  client.setProgressContext(&delivered);
}

void prepare(kvsc::SSLSession& session, const Exchange& exchange, ScriptedDialer& dialer) {
  session.setDialer(&dialer);
  session.setMaxRedirectCount(kRedirects);
  session.setCheckCertificate(exchange.has('k'));
  if (exchange.has('x')) session.setProxyURL("proxy.example");
  if (exchange.has('d')) session.setDownloadSize(16);
  if (exchange.has('D')) session.setDownloadSize(65'536);
}

kvsc::HttpErrorIds run(kvsc::SSLClient& client, kvsc::SSLSession& session,
                       const Exchange& exchange) {
  const std::string url = exchange.has('s') ? "https://films.example/" : "http://films.example/";
  kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_NONE;
  if (exchange.has('r')) {
    client.getRedirectUrl(url, &result, &session, kvsc::SSLV3);
  } else if (exchange.has('p') || exchange.has('q')) {
    client.httpPost(url, "?a=b", &result, &session, "", "", kvsc::SSLV3, exchange.has('p'));
  } else if (exchange.has('h')) {
    client.httpHead(url, 0, &result, &session, "", "", kvsc::SSLV3);
  } else {
    client.httpGet(url, 0, &result, &session, "", "", kvsc::SSLV3);
  }
  return result;
}

void check(const kvsc::SSLClient& client, const kvsc::SSLSession& session,
           kvsc::HttpErrorIds result, std::size_t size) {
  fuzz::require(result >= kvsc::HTTP_ERROR_NONE && result <= kvsc::HTTP_ERROR_CERTIFICATE,
                "a result is one of five");
  fuzz::require(session.getConnect() == nullptr && session.getSsl() == nullptr &&
                    session.getSslContext() == nullptr,
                "an exchange leaves no connection behind");
  fuzz::require(session.getHandshakeOwner() == nullptr, "a handshake has an end");
  fuzz::require(client.getErrorString().size() <= kLongestErrorText + 2 * size,
                "an error text is bounded");
  fuzz::require(client.getTotalDownloaded() >= 0 &&
                    static_cast<std::size_t>(client.getTotalDownloaded()) <= size,
                "no more is counted than was sent");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  return std::freopen("/dev/null", "w", stdout) != nullptr ? 0 : 1;  // the client prints errors
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static kvsc::SSLClient client("LOCALHOST");
  const Exchange exchange = exchangeIn(data, size);
  ScriptedDialer dialer(exchange.responses);
  kvsc::SSLSession session;
  Delivered delivered;
  prepare(client, exchange, delivered);
  prepare(session, exchange, dialer);
  check(client, session, run(client, session, exchange), size);
  fuzz::require(dialer.dialled() <= kMostHops, "redirects are bounded");
  fuzz::require(delivered.bytes <= 3 * size, "nothing is delivered that was not sent");
  return 0;
}
