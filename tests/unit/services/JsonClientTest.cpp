#include <gtest/gtest.h>

#include "playerx/services/JsonClient.h"
#include "tests/support/Loopback.h"
#include "tests/support/Nginx.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TestPki.h"

namespace playerx {
namespace {

using support::okResponse;
using support::Script;
using support::ScriptedServer;

TEST(JsonClientTest, APostCarriesItsTextAsJson) {
  ScriptedServer server;
  server.next(Script::answer(okResponse("{}")));
  const JsonReply reply = JsonClient(server.url("/base/"), {}).post("/x", R"({"a":1})");
  EXPECT_TRUE(reply.ok) << reply.problem;
  EXPECT_EQ(reply.body, "{}");
  const std::string request = server.ended(0).received;
  EXPECT_EQ(request.substr(0, 12), "POST /base/x");
  EXPECT_NE(request.find("Content-Type: application/json\r\n"), std::string::npos);
  EXPECT_NE(request.find("Content-Length: 7\r\n"), std::string::npos);
}

TEST(JsonClientTest, AnErrorStatusIsAProblem) {
  ScriptedServer server;
  server.always(Script::answer(support::bareResponse("500 Oops")));
  const JsonReply reply = JsonClient(server.url(), {}).get("/x");
  EXPECT_FALSE(reply.ok);
  EXPECT_EQ(reply.problem, "The online services answered with status 500.");
}

TEST(JsonClientTest, ARedirectIsNotFollowed) {
  ScriptedServer server;
  server.always(Script::answer(support::bareResponse("302 Found", "Location: /y\r\n")));
  EXPECT_FALSE(JsonClient(server.url(), {}).get("/x").ok);
  EXPECT_EQ(server.connectionCount(), 1u);
}

TEST(JsonClientTest, ARefusedConnectionIsAProblem) {
  const support::RefusingPort port;
  const JsonReply reply =
      JsonClient("http://127.0.0.1:" + std::to_string(port.port()), {}).get("/x");
  EXPECT_FALSE(reply.ok);
  EXPECT_EQ(reply.problem,
            "The online services cannot be reached (Couldn't connect to server); check their "
            "address (--services), or try again later.");
}

TEST(JsonClientTest, AnAnswerThatIsNoneIsCalledSo) {
  for (const char* bytes :
       {"SSH-2.0-server\r\n", "", "HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\n",
        "HTTP/1.0 200 OK\r\nContent-Length: 50\r\n\r\n{}"}) {
    ScriptedServer server;
    server.always(Script::answer(bytes));
    const JsonReply reply = JsonClient(server.url(), {}).get("/x");
    EXPECT_FALSE(reply.ok);
    EXPECT_EQ(reply.problem,
              "The online services gave no proper answer; check their address (--services), or "
              "try again later.")
        << bytes;
  }
}

TEST(JsonClientTest, AnAddressOfAnotherSchemeIsCalledSo) {
  for (const char* address : {"ftp://127.0.0.1", "http://[x"}) {
    EXPECT_EQ(JsonClient(address, {}).get("/x").problem,
              "The address of the online services (--services) does not begin with http:// "
              "or https://.")
        << address;
  }
}

TEST(JsonClientTest, ABodyBeyondTheLimitIsRefused) {
  ScriptedServer server;
  server.always(Script::answer(okResponse(std::string(JsonClient::kMaxAnswer + 1, 'x'))));
  EXPECT_FALSE(JsonClient(server.url(), {}).get("/x").ok);
}

TEST(JsonClientTest, ATornBodyIsAProblem) {
  ScriptedServer server;
  server.always(Script::answer("HTTP/1.0 200 OK\r\nContent-Length: 50\r\n\r\n{}"));
  EXPECT_FALSE(JsonClient(server.url(), {}).get("/x").ok);
}

TEST(JsonClientTest, AnExchangeThatIsGivenUpEndsWithoutAnAnswer) {
  ScriptedServer server;
  server.always(Script().readRequest().stall());
  const auto start = std::chrono::steady_clock::now();
  const JsonReply reply =
      JsonClient(server.url(), {}).get("/x", [&] { return !server.requests().empty(); });
  EXPECT_FALSE(reply.ok);
  EXPECT_EQ(reply.problem, "The player ended before the online services answered; try again.");
  EXPECT_LT(std::chrono::steady_clock::now() - start,
            std::chrono::seconds(JsonClient::kWholeSeconds - 5));
}

TEST(JsonClientTest, OnlyTrustedCertificatesAreTalkedTo) {
  const support::TempDir folder;
  const support::Identity authority = support::pki::authority("Services");
  const support::Nginx server({.tls = support::pki::issue(authority, {.commonName = "localhost",
                                                                      .dnsNames = {"localhost"}})});
  server.serve("x", "{}");
  const std::string caFile = folder.write("ca.pem", authority.certificatePem());
  EXPECT_TRUE(JsonClient(server.url("", "localhost"), {caFile, ""}).get("/x").ok);
  EXPECT_FALSE(JsonClient(server.url("", "localhost"), {}).get("/x").ok);
}

TEST(JsonClientTest, NoAddressIsKnownAsSuch) {
  EXPECT_FALSE(JsonClient("", {}).hasAddress());
  EXPECT_TRUE(JsonClient("http://h", {}).hasAddress());
}

}  // namespace
}  // namespace playerx
