#include <gtest/gtest.h>
#include <unistd.h>

#include "kvsc/OpenSsl.h"
#include "kvsc/SSLClient.h"
#include "tests/support/ScriptedServer.h"

namespace kvsc {
namespace {

using support::Script;
using support::ScriptedServer;

std::size_t take(void*, std::size_t size, std::size_t count, void* context) {
  *static_cast<int*>(context) += 1;
  return size * count;
}

int go(void* context, double, double, double, double) {
  *static_cast<int*>(context) += 1;
  return 0;
}

TEST(SSLClientTest, AFreshClientHasNoCallbacks) {
  const SSLClient client("LOCALHOST");
  EXPECT_EQ(client.getHeaderContext(), nullptr);
  EXPECT_EQ(client.getBodyContext(), nullptr);
  EXPECT_EQ(client.getFileContext(), nullptr);
  EXPECT_EQ(client.getProgressContext(), nullptr);
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(client.getText(i), "");
}

TEST(SSLClientTest, ContextsAndTextsAreKept) {
  SSLClient client("LOCALHOST");
  int contexts[4];
  client.setHeaderContext(&contexts[0]);
  client.setBodyContext(&contexts[1]);
  client.setFileContext(&contexts[2]);
  client.setProgressContext(&contexts[3]);
  client.setText(3, "text");
  EXPECT_EQ(client.getHeaderContext(), &contexts[0]);
  EXPECT_EQ(client.getBodyContext(), &contexts[1]);
  EXPECT_EQ(client.getFileContext(), &contexts[2]);
  EXPECT_EQ(client.getProgressContext(), &contexts[3]);
  EXPECT_EQ(client.getText(3), "text");
}

TEST(SSLClientTest, InitClearsCallbacksAndContexts) {
  ScriptedServer server;
  server.always(Script().readRequest().sendPieces(support::bareResponse("200 OK"), 4096).send("x"));
  SSLClient client("LOCALHOST");
  SSLSession session;
  int calls = 0;
  const auto setAll = [&] {
    client.setHeaderCallback(take);
    client.setBodyCallback(take);
    client.setFileWriteCallback(take);
    client.setProgressCallback(go);
    client.setHeaderContext(&calls);
    client.setBodyContext(&calls);
    client.setFileContext(&calls);
    client.setProgressContext(&calls);
  };
  setAll();
  const std::string url = server.url("/", "127.0.0.1");
  client.httpGet(url, 0, nullptr, &session, "", "", SSLV3);
  EXPECT_EQ(calls, 2 + 3);
  client.setTotalDownloaded(5);
  client.init();
  EXPECT_EQ(client.getTotalDownloaded(), 0);
  EXPECT_EQ(client.getHeaderContext(), nullptr);
  EXPECT_EQ(client.getBodyContext(), nullptr);
  EXPECT_EQ(client.getFileContext(), nullptr);
  EXPECT_EQ(client.getProgressContext(), nullptr);
  client.httpGet(url, 0, nullptr, &session, "", "", SSLV3);
  EXPECT_EQ(calls, 2 + 3);
}

/// What `close` frees.
class CloseTest : public testing::Test {
 protected:
  void expectClosed() {
    EXPECT_EQ(session_.getConnect(), nullptr);
    EXPECT_EQ(session_.getSsl(), nullptr);
    EXPECT_EQ(session_.getSslContext(), nullptr);
  }

  SSLClient client_{"LOCALHOST"};
  SSLSession session_;
};

TEST_F(CloseTest, WithoutAConnectionThereIsNothingToDo) {
  client_.close(&session_);
  expectClosed();
}

TEST_F(CloseTest, APlainConnectionIsFreed) {
  session_.setConnect(BIO_push(BIO_new(BIO_f_buffer()), BIO_new(BIO_s_mem())));
  client_.close(&session_);
  expectClosed();
}

TEST_F(CloseTest, ATlsConnectionIsFreedOnce) {
  session_.setSslContext(newClientContext(SSLV3).release());
  session_.setSsl(SSL_new(session_.getSslContext()));
  session_.setConnect(BIO_new(BIO_s_mem()));
  SSL_set_bio(session_.getSsl(), session_.getConnect(), session_.getConnect());
  client_.close(&session_);
  expectClosed();
}

TEST_F(CloseTest, ItWorksThroughTheBaseClass) {
  session_.setConnect(BIO_new(BIO_s_mem()));
  static_cast<SSLConnect&>(client_).close(&session_);
  expectClosed();
}

TEST_F(CloseTest, PendingErrorsAreLeftAlone) {
  ERR_clear_error();  // those of earlier tests
  raiseLookupError("why");
  session_.setSslContext(newClientContext(SSLV3).release());
  session_.setSsl(SSL_new(session_.getSslContext()));
  client_.close(&session_);
  EXPECT_NE(ERR_get_error(), 0UL);
  EXPECT_EQ(ERR_get_error(), 0UL);
}

TEST_F(CloseTest, TheServerIsToldOfTheEnd) {
  support::ScriptedServer server(support::TlsSettings{.identity = support::pki::selfSigned()});
  server.next(Script().readRequest().send(support::okResponse("film")).readToEnd());
  EXPECT_EQ(client_.sendRequest(server.url(), 0, "GET", &session_, "", "", ""), HTTP_ERROR_NONE);
  client_.close(&session_);
  EXPECT_FALSE(server.ended().lost);
  expectClosed();
}

}  // namespace
}  // namespace kvsc
