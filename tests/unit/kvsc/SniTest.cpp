#include <gtest/gtest.h>

#include <memory>

#include "tests/support/ScriptedServer.h"
#include "tests/unit/kvsc/TlsTesting.h"

namespace {

using support::ConnectionRecord;
using support::Script;
using support::ScriptedServer;

/// One server that is reached under any name, over each protocol version.
class ServerNameTest : public testing::TestWithParam<int> {
 protected:
  ServerNameTest()
      : server_(support::TlsSettings{.identity = serverOf({.commonName = std::nullopt}),
                                     .minVersion = GetParam(),
                                     .maxVersion = GetParam()}),
        dialer_(server_.port()) {
    server_.always(Script::answer(support::okResponse("film")));
    client_.session().setDialer(&dialer_);
  }

  ConnectionRecord reach(const std::string& host) {
    EXPECT_EQ(client_.get("https://" + host + "/"), kSuccess) << host;
    return server_.ended(server_.connectionCount() - 1);
  }

  ScriptedServer server_;
  LoopbackDialer dialer_;
  CheckingClient client_;
};

INSTANTIATE_TEST_SUITE_P(Versions, ServerNameTest, testing::Values(TLS1_2_VERSION, TLS1_3_VERSION),
                         [](const auto& info) {
                           return info.param == TLS1_2_VERSION ? "Tls12" : "Tls13";
                         });

TEST_P(ServerNameTest, ADnsNameIsIndicated) {
  EXPECT_EQ(reach("films.example").serverName, "films.example");
}

TEST_P(ServerNameTest, ATrailingDotIsLeftOut) {
  EXPECT_EQ(reach("films.example.").serverName, "films.example");
}

TEST_P(ServerNameTest, AnAddressIsNotIndicated) {
  EXPECT_FALSE(reach("127.0.0.1").serverNameSent);
  EXPECT_FALSE(reach("192.0.2.7").serverNameSent);
}

TEST_P(ServerNameTest, TheNameIsIndicatedWhetherCertificatesAreCheckedOrNot) {
  client_.session().setCheckCertificate(false);
  EXPECT_EQ(reach("films.example").serverName, "films.example");
}

TEST_P(ServerNameTest, ARedirectIndicatesTheNewName) {
  server_.next(Script::answer(
      support::bareResponse("302 Found", "Location: https://other.example/film\r\n")));
  client_.session().setMaxRedirectCount(1);
  EXPECT_EQ(client_.get("https://films.example/"), kSuccess);
  EXPECT_EQ(server_.ended(0).serverName, "films.example");
  EXPECT_EQ(server_.ended(1).serverName, "other.example");
}

TEST_P(ServerNameTest, NoSessionIsResumedForAnotherHostNorForTheSame) {
  reach("films.example");
  reach("other.example");
  reach("films.example");
  for (std::size_t index = 0; index < 3; ++index)
    EXPECT_FALSE(server_.ended(index).resumed) << index;
}

}  // namespace
