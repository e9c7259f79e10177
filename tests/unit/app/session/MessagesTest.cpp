#include <gmock/gmock.h>

#include "KPIM/Helper.h"
#include "playerx/app/session/Messages.h"

namespace playerx::session {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(MessagesTest, SentencesAreTakenOnceInTheirOrder) {
  int wakes = 0;
  Messages messages([&wakes] { ++wakes; });
  messages.tellUser("One.");
  messages.tellUser("Two.");
  EXPECT_EQ(wakes, 2);
  EXPECT_THAT(messages.take(), ElementsAre("One.", "Two."));
  EXPECT_THAT(messages.take(), IsEmpty());
}

TEST(MessagesTest, PlugInsFindThemByTheirId) {
  Messages messages([] {});
  PluginContext context({});
  messages.offerTo(context);
  const auto found = KPIM::load<UserMessages>(&context, kUserMessagesId);
  ASSERT_NE(found, nullptr);
  found->get()->tellUser("Hello.");
  EXPECT_THAT(messages.take(), ElementsAre("Hello."));
}

}  // namespace
}  // namespace playerx::session
