#include <gmock/gmock.h>

#include <memory>

#include "VeskPlayerX/InterfaceIds.h"
#include "item/DownloadItem.h"
#include "playerx/framework/UserMessages.h"
#include "playerx/services/OnlineServices.h"
#include "playerx/services/ServicesProtocol.h"
#include "tests/support/Loopback.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TempDir.h"
#include "tests/support/fakes/FakeContext.h"
#include "tests/support/fakes/FakeMessages.h"
#include "tests/support/fakes/FakePlayerEnd.h"

namespace playerx {
namespace {

using support::okResponse;
using support::Script;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct ReleasePlugin {
  void operator()(KPIM::Plugin* plugin) const { plugin->kpimRelease(); }
};

class OnlineServicesTest : public testing::Test {
 protected:
  support::ScriptedServer server;
  support::FakeContext context;
  support::FakeMessages messages;
  support::FakePlayerEnd end;
  support::TempDir folder;
  std::unique_ptr<OnlineServices, ReleasePlugin> services = connect(server.url(""));

  std::unique_ptr<OnlineServices, ReleasePlugin> connect(const std::string& address) {
    context.offer<UserMessages>(kUserMessagesId, &messages);
    context.offer<PlayerEnd>(kPlayerEndId, &end);
    return std::unique_ptr<OnlineServices, ReleasePlugin>(
        new OnlineServices(&context, JsonClient(address, {})));
  }

  void answer(const std::string& path, const std::string& json) {
    server.onPath(path, Script().send(okResponse(json)));
  }

  std::vector<VeskDrmTicketData*> read(const std::string& content) {
    return services->readTicket(folder.write("t.tix", content).wstring());
  }

  VeskDrmDownloadAuthorization authorize() {
    DownloadItem item;
    item.setTicket("the ticket");
    item.setSlotNumber(3);
    VeskDrmDownloadAuthorization result;
    services->authorizeDownload(&item, result);
    return result;
  }
};

TEST_F(OnlineServicesTest, ItOffersTheServicesInterfaceAlone) {
  void* face = nullptr;
  EXPECT_EQ(services->kpimGetInterface(VeskPlayerX::DIN_ZPSServices, &face), KPIM::kSuccess);
  EXPECT_EQ(face, static_cast<VeskPlayerX::ZPSServicesInterface*>(services.get()));
  EXPECT_EQ(services->kpimGetInterface(VeskPlayerX::DIN_Player, &face), KPIM::kUnknownInterface);
}

TEST_F(OnlineServicesTest, ASealedTicketIsReadByTheService) {
  answer("/tickets/read", R"({"records":[{"ticket":"r","title":"Film","usageId":5}]})");
  const auto records = read("VeskSealedTicket 1\nabc\n");
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0]->title, L"Film");
  EXPECT_THAT(messages.sentences, IsEmpty());
}

TEST_F(OnlineServicesTest, AClearTicketNeverLeavesThePlayer) {
  EXPECT_THAT(read("TixVeskVersion=1.0\nstart\nend\n"), IsEmpty());
  EXPECT_EQ(server.connectionCount(), 0u);
}

TEST_F(OnlineServicesTest, AServiceThatCannotReadTheTicketIsReported) {
  answer("/tickets/read", R"({"records":[]})");
  EXPECT_THAT(read("VeskSealedTicket 1\nabc\n"), IsEmpty());
  EXPECT_THAT(messages.sentences, ElementsAre("The online services cannot read this ticket."));
}

TEST_F(OnlineServicesTest, AnAnswerThatMakesNoSenseIsNotPutOnTheTicket) {
  for (const char* nonsense : {"", "null", "<html>Log in</html>", R"({"records":[{}]})"}) {
    messages.sentences.clear();
    answer("/tickets/read", nonsense);
    EXPECT_THAT(read("VeskSealedTicket 1\nabc\n"), IsEmpty());
    EXPECT_THAT(messages.sentences, ElementsAre(kNoProperAnswer)) << nonsense;
  }
}

TEST_F(OnlineServicesTest, AnUnreachableServiceIsReported) {
  const support::RefusingPort nobody;
  services = connect("http://127.0.0.1:" + std::to_string(nobody.port()));
  EXPECT_THAT(read("VeskSealedTicket 1\nabc\n"), IsEmpty());
  EXPECT_THAT(messages.sentences, ElementsAre(HasSubstr("cannot be reached")));
  EXPECT_FALSE(services->isReady(0, 0, 0));
  EXPECT_EQ(authorize().errorCode, kServicesUnreachable);
}

TEST_F(OnlineServicesTest, WithoutAnAddressEveryTicketIsClear) {
  services = connect("");
  EXPECT_THAT(read("VeskSealedTicket 1\nabc\n"), IsEmpty());
  EXPECT_FALSE(services->isReady(0, 0, 0));
}

TEST_F(OnlineServicesTest, ReadinessIsWhatTheServiceSays) {
  answer("/ready", R"({"ready":true})");
  EXPECT_TRUE(services->isReady(0, 0, 0));
  answer("/ready", R"({"ready":false})");
  EXPECT_FALSE(services->isReady(0, 0, 0));
}

TEST_F(OnlineServicesTest, AnAuthorisationIsAskedForByTicketWithSlot) {
  answer("/downloads/authorize",
         R"({"success":true,"url":"http://h/a","username":"u","password":"p","ticketId":7,)"
         R"("size":10,"rights":""})");
  EXPECT_TRUE(authorize().success);
  EXPECT_THAT(server.requests().back(), HasSubstr(R"({"slot":3,"ticket":"the ticket"})"));
}

TEST_F(OnlineServicesTest, AConfirmationArrives) {
  answer("/downloads/confirm", "{}");
  services->confirmDownload(7, 500);
  services.reset();  // sends what is left
  EXPECT_THAT(server.requests().back(), HasSubstr(R"({"bytes":500,"ticketId":7})"));
}

TEST_F(OnlineServicesTest, ATicketIsNotWaitedForOnceThePlayerIsToEnd) {
  server.always(Script().readRequest().stall());
  end.wanted = true;
  EXPECT_THAT(read("VeskSealedTicket 1\nabc\n"), IsEmpty());
  EXPECT_THAT(messages.sentences, ElementsAre(HasSubstr("The player ended before")));
}

TEST_F(OnlineServicesTest, AFilmIsAuthorisedUntilThePlayerHasStoppedIt) {
  end.wanted = true;
  answer("/ready", R"({"ready":true})");
  EXPECT_TRUE(services->isReady(0, 0, 0));
  server.always(Script().readRequest().stall());
  end.underWay = true;
  EXPECT_FALSE(services->isReady(0, 0, 0));
  EXPECT_EQ(authorize().errorCode, kServicesUnreachable);
}

TEST_F(OnlineServicesTest, AnErrorIsShownInTheServicesWords) {
  services->showError(L"Withdrawn.", true);
  EXPECT_THAT(messages.sentences, ElementsAre("Withdrawn."));
}

}  // namespace
}  // namespace playerx
