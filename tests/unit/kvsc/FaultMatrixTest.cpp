// Everything a server can do wrong, in the clear and under each TLS version.
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>

#include "tests/support/Loopback.h"
#include "tests/support/ScriptedServer.h"
#include "tests/unit/kvsc/TlsTesting.h"

namespace {

using kvsc::HTTP_ERROR_FAILED;
using kvsc::HTTP_ERROR_NONE;
using kvsc::HTTP_ERROR_NOT_MODIFIED;
using support::Connection;
using support::Script;
using support::ScriptedServer;

enum class Transport { kPlain, kTls12, kTls13 };

const char* nameOf(Transport transport) {
  switch (transport) {
    case Transport::kPlain:
      return "Plain";
    case Transport::kTls12:
      return "Tls12";
    case Transport::kTls13:
      return "Tls13";
  }
  return "";
}

/// What an exchange comes to.
struct Expected {
  kvsc::HttpErrorIds result = HTTP_ERROR_FAILED;
  std::string body = {};
};

/// When a fault happens.
enum class Phase {
  kGreeting,  ///< after the client's first byte, in the clear: in place of a handshake, if any
  kRequest,   ///< after the request has been read
};

/// One fault. `self` in its bytes stands for the server's address, `refused` for a port that
/// refuses.
struct Fault {
  const char* name;
  Phase phase;
  std::string bytes;            ///< what the server sends
  Script& (Script::*ending)();  ///< how it goes on
  Expected plain;
  Expected tls;
  int connections = 1;  ///< as often the fault is played
  bool stalls = false;
};

void PrintTo(const Fault& fault, std::ostream* out) { *out << fault.name; }

constexpr auto kClose = &Script::close;
constexpr auto kTruncate = &Script::truncate;
constexpr auto kReset = &Script::reset;
constexpr auto kStall = &Script::stall;

const Expected kFailed{HTTP_ERROR_FAILED};
const Expected kNothing{HTTP_ERROR_NONE};

/// Bytes in place of a handshake: a body in the clear, nonsense under TLS.
Fault greeting(const char* name, const std::string& bytes) {
  return {name, Phase::kGreeting, bytes, kClose, {HTTP_ERROR_NONE, bytes}, kFailed};
}

/// A response that is received whole.
Fault response(const char* name, const std::string& bytes, const Expected& expected) {
  return {name, Phase::kRequest, bytes, kClose, expected, expected};
}

/// An error status with a page that comes with it.
Fault status(const char* name, const std::string& line) {
  return response(name, "HTTP/1.0 " + line + "\r\n\r\npage", {HTTP_ERROR_FAILED, "page"});
}

/// A status that leads to `location`, which may be missing.
Fault redirect(const char* name, const std::string& line, const std::string& location,
               const std::string& body = "", int connections = 1) {
  const std::string header = location.empty() ? "" : "Location: " + location + "\r\n";
  Fault fault =
      response(name, "HTTP/1.0 " + line + "\r\n" + header + "\r\npage", {HTTP_ERROR_FAILED, body});
  fault.connections = connections;
  return fault;
}

Fault stall(const char* name, Phase phase, const std::string& bytes, const std::string& body) {
  const Expected expected{HTTP_ERROR_FAILED, body};
  return {name, phase, bytes, kStall, expected, expected, 1, true};
}

const std::string kHead = "HTTP/1.0 200 OK\r\nContent-Length: 9\r\n\r\n";

const Fault kFaults[] = {
    // In place of a handshake.
    {"EndInTheGreeting", Phase::kGreeting, "", kClose, kNothing, kFailed},
    {"ResetInTheGreeting", Phase::kGreeting, "", kReset, kFailed, kFailed},
    stall("SilenceInTheGreeting", Phase::kGreeting, "", ""),
    greeting("AnotherProtocol", "220 mail.example ready\r\n"),
    greeting("ZeroBytes", std::string(64, '\0')),
    greeting("HighBytes", std::string(64, '\xff')),
    greeting("FatalAlert", std::string("\x15\x03\x03\x00\x02\x02\x28", 7)),
    greeting("CloseNotifyAlert", std::string("\x15\x03\x03\x00\x02\x01\x00", 7)),
    greeting("UnknownRecordType", std::string("\x63\x03\x03\x00\x01x", 6)),
    greeting("RecordOfAnotherVersion", std::string("\x16\x7f\x7f\x00\x01x", 6)),
    greeting("RecordThatIsTooLong", std::string("\x16\x03\x03\xff\xff", 5)),
    greeting("RecordThatBreaksOff", std::string("\x16\x03\x03\x00\x20\x02\x00", 7)),
    greeting("EmptyRecord", std::string("\x16\x03\x03\x00\x00", 5)),
    greeting("ApplicationDataTooEarly", std::string("\x17\x03\x03\x00\x01x", 6)),
    greeting("ClientHelloFromTheServer", std::string("\x16\x03\x01\x00\x04\x01\x00\x00\x00", 9)),
    {"RefusalInTheClear",
     Phase::kGreeting,
     "HTTP/1.0 400 Bad Request\r\n\r\npage",
     kClose,
     {HTTP_ERROR_FAILED, "page"},
     kFailed},

    // In place of a response.
    {"EndWithoutAResponse", Phase::kRequest, "", kClose, kNothing, kNothing},
    {"CutOffWithoutAResponse", Phase::kRequest, "", kTruncate, kNothing, kNothing},
    {"ResetWithoutAResponse", Phase::kRequest, "", kReset, kFailed, kFailed},
    stall("SilenceInPlaceOfAResponse", Phase::kRequest, "", ""),

    // Error statuses.
    status("Status300", "300 Multiple Choices"),
    status("Status305", "305 Use Proxy"),
    status("Status308", "308 Permanent Redirect"),
    status("Status400", "400 Bad Request"),
    status("Status401", "401 Unauthorized"),
    status("Status403", "403 Forbidden"),
    status("Status404", "404 Not Found"),
    status("Status407", "407 Proxy Authentication Required"),
    status("Status410", "410 Gone"),
    status("Status416", "416 Range Not Satisfiable"),
    status("Status429", "429 Too Many Requests"),
    status("Status500", "500 Internal Server Error"),
    status("Status502", "502 Bad Gateway"),
    status("Status503", "503 Service Unavailable"),
    status("Status504", "504 Gateway Timeout"),
    status("Status999", "999"),
    response("Status304", "HTTP/1.0 304 Not Modified\r\n\r\n", {HTTP_ERROR_NOT_MODIFIED}),

    // Redirects that lead nowhere.
    redirect("MovedWithoutLocation", "301 Moved Permanently", ""),
    redirect("FoundWithoutLocation", "302 Found", ""),
    redirect("SeeOtherWithoutLocation", "303 See Other", "", "page"),
    redirect("TemporaryWithoutLocation", "307 Temporary Redirect", "", "page"),
    redirect("RelativeLocation", "302 Found", "/elsewhere"),
    redirect("LocationOfAnotherScheme", "302 Found", "ftp://films.example/film"),
    redirect("LocationWithoutAHost", "302 Found", "http:///film"),
    redirect("LocationThatRefuses", "302 Found", "http://127.0.0.1:refused/"),
    redirect("Loop", "302 Found", "self", "", 3),

    // Header blocks.
    response("BlockThatBreaksOff", "HTTP/1.0 200 OK\r\nA: b\r\n",
             {HTTP_ERROR_NONE, "HTTP/1.0 200 OK\r\nA: b\r\n"}),
    response("BareLineFeeds", "HTTP/1.0 404 No\n\npage",
             {HTTP_ERROR_NONE, "HTTP/1.0 404 No\n\npage"}),
    response("NoStatusLine", "hello\r\n\r\nfilm", {HTTP_ERROR_NONE, "film"}),
    response("StatusLineWithoutACode", "HTTP/1.0 OK\r\n\r\nfilm", {HTTP_ERROR_NONE, "film"}),
    response("NegativeCode", "HTTP/1.0 -5 OK\r\n\r\nfilm", {HTTP_ERROR_NONE, "film"}),
    response("CodeThatDoesNotFit", "HTTP/1.0 99999999999 OK\r\n\r\nfilm",
             {HTTP_ERROR_NONE, "film"}),
    response("InterimResponse", "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\n\r\n",
             {HTTP_ERROR_NONE, "HTTP/1.1 200 OK\r\n\r\n"}),
    response("HeaderWithZeroBytes", std::string("HTTP/1.0 200 OK\r\nA: \0\0\r\n\r\nfilm", 30),
             {HTTP_ERROR_NONE, "film"}),
    response("HeaderLineWithoutAColon", "HTTP/1.0 200 OK\r\nnonsense\r\n\r\nfilm",
             {HTTP_ERROR_NONE, "film"}),
    response("LongHeaderLine", "HTTP/1.0 200 OK\r\nA: " + std::string(3000, 'a') + "\r\n\r\nfilm",
             {HTTP_ERROR_NONE, "film"}),
    response("StatusInAHeaderValue", "HTTP/1.0 200 OK\r\nVia: 500 HTTP\r\n\r\nfilm",
             {HTTP_ERROR_FAILED, "film"}),

    // Bodies.
    response("ChunkedBody", "HTTP/1.0 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nfilm\r\n",
             {HTTP_ERROR_NONE, ""}),
    response("BodyThatIsTooLong", kHead + "a longer film", {HTTP_ERROR_NONE, "a longer film"}),
    response("BodyThatIsTooShort", kHead + "short", {HTTP_ERROR_NONE, "short"}),
    {"BodyThatIsCutOff",
     Phase::kRequest,
     kHead + "short",
     kTruncate,
     {HTTP_ERROR_NONE, "short"},
     {HTTP_ERROR_NONE, "short"}},
    {"ResetInTheBody",
     Phase::kRequest,
     kHead + "short",
     kReset,
     {HTTP_ERROR_FAILED, "short"},
     {HTTP_ERROR_NONE, "short"}},
    stall("SilenceInTheBody", Phase::kRequest, kHead + "short", "short"),
};

std::string replaced(std::string text, const std::string& what, const std::string& by) {
  const std::size_t at = text.find(what);
  return at == std::string::npos ? text : text.replace(at, what.size(), by);
}

class FaultMatrixTest : public testing::TestWithParam<std::tuple<Fault, Transport>> {
 protected:
  FaultMatrixTest() {
    client_.session().setCheckCertificate(isTls());
    client_.session().setMaxRedirectCount(2);
  }

  const Fault& fault() const { return std::get<0>(GetParam()); }
  Transport transport() const { return std::get<1>(GetParam()); }
  bool isTls() const { return transport() != Transport::kPlain; }
  const Expected& expected() const { return isTls() ? fault().tls : fault().plain; }
  std::string url() const {
    return (isTls() ? "https" : "http") + std::string("://localhost:") +
           std::to_string(server_->port()) + "/film";
  }

  Outcome get() {
    client_.session().setRedirectCount(0);
    return client_.get(url());
  }

  void play(const Fault& fault) {
    std::string bytes = replaced(fault.bytes, "self", url());
    bytes = replaced(bytes, "refused", std::to_string(refusing_.port()));
    Script script = fault.phase == Phase::kGreeting ? Script().readBytes(1) : readRequest();
    // Taken before a reset is sent: that discards what has not been read.
    if (!bytes.empty()) script.sendPieces(bytes, bytes.size());
    (script.*fault.ending)();
    for (int i = 0; i < fault.connections; ++i) server_->next(script);
  }

  void playGoodResponse() {
    server_->next(readRequest().send(support::okResponse("film")).close());
  }

 private:
  Script readRequest() const {
    Script script;
    if (isTls()) script.startTls();
    return script.readRequest();
  }

  std::unique_ptr<ScriptedServer> newServer() const {
    if (!isTls()) return std::make_unique<ScriptedServer>();
    const int version = transport() == Transport::kTls12 ? TLS1_2_VERSION : TLS1_3_VERSION;
    return std::make_unique<ScriptedServer>(
        support::TlsSettings{.identity = serverOf(), .minVersion = version, .maxVersion = version},
        ScriptedServer::Tls::kWhenScripted);
  }

 protected:
  const support::RefusingPort refusing_;
  const std::unique_ptr<ScriptedServer> server_ = newServer();
  CheckingClient client_;
};

TEST_P(FaultMatrixTest, AFaultHasItsOutcomeAndTheNextExchangeSucceeds) {
  play(fault());
  if (fault().stalls) client_.session().setWaitTimeout(500);
  EXPECT_EQ(get().result, expected().result);
  EXPECT_EQ(client_.body(), expected().body);
  client_.session().setWaitTimeout(kvsc::SSLSession::kDefaultWaitTimeout);
  playGoodResponse();
  EXPECT_EQ(get().result, HTTP_ERROR_NONE);
  EXPECT_EQ(client_.body(), "film");
}

INSTANTIATE_TEST_SUITE_P(Faults, FaultMatrixTest,
                         testing::Combine(testing::ValuesIn(kFaults),
                                          testing::Values(Transport::kPlain, Transport::kTls12,
                                                          Transport::kTls13)),
                         [](const auto& info) {
                           return std::string(std::get<0>(info.param).name) +
                                  nameOf(std::get<1>(info.param));
                         });

}  // namespace
