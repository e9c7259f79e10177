#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "item/DownloadItem.h"
#include "playerx/framework/PlayerEnd.h"
#include "playerx/framework/UserMessages.h"
#include "playerx/services/OnlineServices.h"
#include "tests/soak/servers/Faults.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TempDir.h"
#include "tests/support/TestPki.h"
#include "tests/support/WaitFor.h"
#include "tests/support/fakes/FakeContext.h"
#include "tests/support/fakes/FakeMessages.h"

namespace soak {
namespace {

using playerx::JsonClient;
using playerx::OnlineServices;
using support::Script;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

const std::string kRecords = R"({"records":[{"ticket":"r","title":"Film","usageId":5}]})";
const std::string kReady = R"({"ready":true})";
const std::string kAuthorisation =
    R"({"success":true,"url":"http://h/a","username":"u","password":"p","ticketId":7,)"
    R"("size":10,"rights":""})";

/// A player that is to end a moment after it was asked for the first time, so that silence is not
/// waited for.
class SoonEnding : public playerx::PlayerEnd {
 public:
  bool isWanted() const override { return isUnderWay(); }
  bool isUnderWay() const override { return std::chrono::steady_clock::now() >= end_; }
  void beginAnew() { end_ = std::chrono::steady_clock::now() + moment; }

  std::chrono::milliseconds moment{200};

 private:
  std::chrono::steady_clock::time_point end_;
};

/// Bodies of complete responses that make no sense as any answer.
std::vector<std::string> nonsense() {
  const std::string deep(100'000, '[');
  return {"",
          "null",
          "[]",
          "{}",
          "true",
          "1e999999",
          "<html>Log in</html>",
          "\xFF\xFE{}",
          std::string(64, '\0'),
          kRecords + kRecords,
          kReady + "x",
          deep,
          std::string(JsonClient::kMaxAnswer + 1, ' '),
          R"({"records":5,"ready":"true","success":"true"})",
          R"({"records":[5],"ready":1,"success":1})",
          R"({"records":[{"ticket":5,"title":[],"usageId":"1"}],"success":true})",
          R"({"records":{},"ready":{"ready":true},"success":true,"url":7,"size":-1})"};
}

/// The client of online services that answer everything alike.
class Services : public testing::Test {
 protected:
  Services() {
    context_.offer<playerx::UserMessages>(playerx::kUserMessagesId, &messages_);
    context_.offer<playerx::PlayerEnd>(playerx::kPlayerEndId, &end_);
  }

  void connect(const std::string& address, const std::string& trusted = "") {
    services_.reset(new OnlineServices(&context_, JsonClient(address, {trusted, ""})));
  }

  std::size_t countRecords() {
    end_.beginAnew();
    messages_.sentences.clear();
    const auto ticket = folder_.write("t.tix", "VeskSealedTicket 1\nx");
    return services_->readTicket(ticket.wstring()).size();
  }

  bool isReady() {
    end_.beginAnew();
    return services_->isReady(0, 0, 0);
  }

  bool isAuthorised() {
    end_.beginAnew();
    DownloadItem item;
    item.setTicket("t");
    VeskDrmDownloadAuthorization answer;
    services_->authorizeDownload(&item, answer);
    EXPECT_EQ(answer.success, answer.errorCode == 0);
    EXPECT_EQ(answer.success, answer.errorDetails.empty());
    return answer.success;
  }

  /// That no answer is taken for one, and the ticket not blamed for it.
  void expectAllRefused() {
    EXPECT_EQ(countRecords(), 0u);
    ASSERT_THAT(messages_.sentences, SizeIs(1));
    EXPECT_THAT(messages_.sentences[0], Not(HasSubstr("cannot read this ticket")));
    EXPECT_FALSE(isReady());
    EXPECT_FALSE(isAuthorised());
  }

  struct Release {
    void operator()(KPIM::Plugin* plugin) const { plugin->kpimRelease(); }
  };

  support::ScriptedServer server_;
  support::FakeContext context_;
  support::FakeMessages messages_;
  support::TempDir folder_;
  SoonEnding end_;
  std::unique_ptr<OnlineServices, Release> services_;
};

TEST_F(Services, ThatMisbehaveAsServersGiveNoAnswer) {
  connect(server_.url(""));
  for (const Fault& fault : faults()) {
    SCOPED_TRACE(fault.name);
    server_.onRequest([&](const std::string&) { return fault.script(server_.url("/ready")); });
    expectAllRefused();
  }
}

TEST_F(Services, ThatAnswerNonsenseGiveNoAnswer) {
  connect(server_.url(""));
  for (const std::string& body : nonsense()) {
    SCOPED_TRACE(body.substr(0, 60));
    server_.onRequest([&](const std::string&) { return Script().send(support::okResponse(body)); });
    expectAllRefused();
  }
}

TEST_F(Services, ThatCutTheirAnswersAnywhereGiveNone) {
  connect(server_.url(""));
  for (const std::string& whole : {kRecords, kReady, kAuthorisation}) {
    for (std::size_t length = 0; length < whole.size(); ++length) {
      SCOPED_TRACE(whole.substr(0, length));
      server_.onRequest([&](const std::string&) {
        return Script().send(support::okResponse(whole.substr(0, length)));
      });
      expectAllRefused();
    }
  }
}

TEST_F(Services, ThatAnswerByteByByteAreHeardToTheEnd) {
  end_.moment = support::kGenerousDeadline;
  connect(server_.url(""));
  const auto answerSlowly = [this](const std::string& body) {
    server_.onRequest(
        [body](const std::string&) { return Script().sendPieces(support::okResponse(body), 1); });
  };
  answerSlowly(kRecords);
  EXPECT_EQ(countRecords(), 1u);
  EXPECT_THAT(messages_.sentences, IsEmpty());
  answerSlowly(kReady);
  EXPECT_TRUE(isReady());
  answerSlowly(kAuthorisation);
  EXPECT_TRUE(isAuthorised());
}

TEST_F(Services, OfAnotherAuthorityAreNotBelieved) {
  namespace pki = support::pki;
  support::TlsSettings settings;
  settings.identity = pki::issue(pki::authority("Impostor"), {});
  support::ScriptedServer impostor(settings);
  impostor.onRequest(
      [](const std::string&) { return Script::answer(support::okResponse(kReady)); });
  const auto trusted = folder_.write("trust.pem", pki::authority("Services").certificatePem());
  connect(impostor.url(""), trusted);
  expectAllRefused();
}

}  // namespace
}  // namespace soak
