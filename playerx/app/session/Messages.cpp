#include "playerx/app/session/Messages.h"

#include "playerx/framework/OwnPlugin.h"

namespace playerx::session {

void Messages::tellUser(const std::string& sentence) {
  {
    const GuardLock lock(mutex_);
    sentences_.push_back(sentence);
  }
  wake_();
}

std::vector<std::string> Messages::take() {
  const GuardLock lock(mutex_);
  return std::exchange(sentences_, {});
}

void Messages::offerTo(PluginContext& context) {
  offerOwn<UserMessages>(context, {"com.vesk.playerX.plugin.Messages", "1.0", {kUserMessagesId}},
                         *this);
}

}  // namespace playerx::session
