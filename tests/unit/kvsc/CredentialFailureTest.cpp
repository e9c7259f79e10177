// What is left when the crypto library will not take the client's credentials.
#include <gtest/gtest.h>
#include <openssl/ssl.h>

#include <cstdio>
#include <cstdlib>
#include <ostream>
#include <string>

#include "kvsc/SSLClient.h"
#include "tests/support/ScriptedServer.h"
#include "tests/unit/kvsc/FailingOpenSsl.h"

namespace kvsc {
namespace {

using support::Script;
using support::ScriptedServer;

struct FailureCase {
  const char* name;
  LibraryCall call;
  int passed;
  const char* text;
};

void PrintTo(const FailureCase& c, std::ostream* out) { *out << c.name; }

std::string nameOf(const testing::TestParamInfo<FailureCase>& info) { return info.param.name; }

/// Shows what the class keeps to itself.
class Bare : public SSLClient {
 public:
  using SSLClient::SSLClient;
  using SSLConnect::isInitialized;
};

void expectInChild(bool condition, const std::string& what) {
  if (condition) return;
  std::fputs(("not as expected: " + what + "\n").c_str(), stderr);
  std::_Exit(1);
}

/// Each case runs in a process of its own, in which no certificate has been read yet.
class InitFailureTest : public testing::TestWithParam<FailureCase> {
 protected:
  InitFailureTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  static void expectFailedInit(Bare& client) {
    expectInChild(client.getErrorString() == GetParam().text, client.getErrorString());
    expectInChild(!Bare::isInitialized(), "the crypto library is started");
  }

  static void expectPlainExchange(SSLClient& client) {
    ScriptedServer server;
    server.next(Script::answer(support::okResponse("film")));
    SSLSession session;
    HttpErrorIds result = HTTP_ERROR_FAILED;
    client.httpGet(server.url("/", "127.0.0.1"), 0, &result, &session, "", "", SSLV3);
    expectInChild(result == HTTP_ERROR_NONE, client.getErrorString());
    expectInChild(client.getTotalDownloaded() == 4, "the body");
  }

  static void expectNoChecks(SSLClient& client) {
    SSLSession session;
    session.setCheckCertificate(true);
    expectInChild(client.setupContext(&session, nullptr) == 0, "a context without credentials");
    expectInChild(session.getSslContext() == nullptr, "a context");
  }
};

TEST_P(InitFailureTest, LeavesItsTextAndAClientForPlainExchanges) {
  const auto run = [] {
    const FailingOpenSsl failing(GetParam().call, GetParam().passed);
    Bare client("LOCALHOST");
    expectFailedInit(client);
    expectPlainExchange(client);
    expectNoChecks(client);
    std::_Exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST_P(InitFailureTest, IsRepairedByTheNextInit) {
  const auto run = [] {
    Bare client = [] {
      const FailingOpenSsl failing(GetParam().call, GetParam().passed);
      return Bare("LOCALHOST");
    }();
    client.init();
    expectInChild(Bare::isInitialized(), "the crypto library is not started");
    SSLSession session;
    session.setCheckCertificate(true);
    expectInChild(client.setupContext(&session, nullptr) == 1, client.getErrorString());
    std::_Exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

INSTANTIATE_TEST_SUITE_P(
    Steps, InitFailureTest,
    testing::Values(FailureCase{"AuthorityBio", LibraryCall::kBioNew, 0,
                                "Unable to create memory BIOs to read in certificates"},
                    FailureCase{"ClientBio", LibraryCall::kBioNew, 1,
                                "Unable to create memory BIOs to read in certificates"},
                    FailureCase{"AuthorityWrite", LibraryCall::kBioWrite, 0,
                                "Error reading in CA certificate into BIO"},
                    FailureCase{"Authority", LibraryCall::kReadAuthority, 0,
                                "Error reading in CA certificate into X509 object"},
                    FailureCase{"ClientWrite", LibraryCall::kBioWrite, 1,
                                "Error reading in client certificate into BIO"},
                    FailureCase{"Client", LibraryCall::kReadCertificate, 0,
                                "Error reading in client certificate into X509 object"}),
    nameOf);

class ContextFailureTest : public testing::TestWithParam<FailureCase> {
 protected:
  ContextFailureTest() { session_.setCheckCertificate(true); }
  ~ContextFailureTest() override { client_.close(&session_); }

  SSLClient client_{"LOCALHOST"};
  SSLSession session_;
};

TEST_P(ContextFailureTest, LeavesItsTextAndNoContext) {
  {
    const FailingOpenSsl failing(GetParam().call, GetParam().passed);
    EXPECT_EQ(client_.setupContext(&session_, nullptr), 0);
  }
  EXPECT_EQ(client_.getErrorString(), GetParam().text);
  EXPECT_EQ(session_.getSslContext(), nullptr);
  EXPECT_EQ(client_.setupContext(&session_, nullptr), 1);
}

TEST_P(ContextFailureTest, DoesNotMatterWithoutChecks) {
  session_.setCheckCertificate(false);
  const FailingOpenSsl failing(GetParam().call, GetParam().passed);
  EXPECT_EQ(client_.setupContext(&session_, nullptr), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Steps, ContextFailureTest,
    testing::Values(
        FailureCase{"Authority", LibraryCall::kAddToStore, 0,
                    "Error loading our CA certificate into the cert store"},
        FailureCase{"KeyBio", LibraryCall::kBioNew, 0,
                    "Unable to create memory key BIO to read in private key"},
        FailureCase{"KeyWrite", LibraryCall::kBioWrite, 0, "Error reading in client key into BIO"},
        FailureCase{"Key", LibraryCall::kReadKey, 0, "Error reading in client key into RSA object"},
        FailureCase{"UseCertificate", LibraryCall::kUseCertificate, 0,
                    "Unable to load certificate from memory"},
        FailureCase{"UseKey", LibraryCall::kUseKey, 0, "Error loading private key from memory"}),
    nameOf);

TEST(HandshakeFailureTest, WithoutATlsObjectThereIsNoConnectionAndNoText) {
  ScriptedServer server(support::TlsSettings{.identity = support::pki::selfSigned()});
  server.always(Script().readToEnd());
  SSLClient client("LOCALHOST");
  SSLSession session;
  session.setUseSSL(true);
  session.setHost("127.0.0.1");
  session.setPort(std::to_string(server.port()));
  {
    const FailingOpenSsl failing(LibraryCall::kSslNew);
    EXPECT_EQ(client.connect(&session), nullptr);
  }
  EXPECT_EQ(client.getErrorString(), "");
  EXPECT_EQ(session.getSsl(), nullptr);
  EXPECT_EQ(session.getHandshakeOwner(), nullptr);
  client.close(&session);
  EXPECT_EQ(session.getConnect(), nullptr);
}

TEST(HandshakeFailureTest, AnExchangeWithoutATlsObjectFails) {
  ScriptedServer server(support::TlsSettings{.identity = support::pki::selfSigned()});
  server.always(Script().readToEnd());
  SSLClient client("LOCALHOST");
  SSLSession session;
  const FailingOpenSsl failing(LibraryCall::kSslNew);
  HttpErrorIds result = HTTP_ERROR_NONE;
  client.httpGet(server.url(), 0, &result, &session, "", "", SSLV3);
  EXPECT_EQ(result, HTTP_ERROR_FAILED);
  EXPECT_EQ(session.getConnect(), nullptr);
}

TEST(HandshakeTest, ItsOwnerIsKnownOnlyWhileItRuns) {
  ScriptedServer server(support::TlsSettings{.identity = support::pki::selfSigned()});
  server.always(Script().readToEnd());
  static const SSLConnect* seen = nullptr;
  SSLClient client("LOCALHOST");
  SSLSession session;
  session.setUseSSL(true);
  session.setHost("127.0.0.1");
  session.setPort(std::to_string(server.port()));
  watchHandshakes([](const SSL* ssl) {
    seen = static_cast<const SSLSession*>(SSL_get_app_data(ssl))->getHandshakeOwner();
  });
  EXPECT_NE(client.connect(&session), nullptr);
  watchHandshakes(nullptr);
  EXPECT_EQ(seen, &client);
  EXPECT_EQ(session.getHandshakeOwner(), nullptr);
  client.close(&session);
}

}  // namespace
}  // namespace kvsc
