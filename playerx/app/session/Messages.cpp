#include "playerx/app/session/Messages.h"

namespace playerx::session {

namespace {

class MessagesPlugin : public KPIM::Plugin {
 public:
  MessagesPlugin(KPIM::Context* context, UserMessages& messages)
      : KPIM::Plugin(context), messages_(messages) {}

  KPIM::VESK_RESULT kpimGetInterface(std::string id, void** out) override {
    if (id != kUserMessagesId) return KPIM::kUnknownInterface;
    *out = &messages_;
    return KPIM::kSuccess;
  }

 private:
  UserMessages& messages_;
};

}  // namespace

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
  context.add({"com.vesk.playerX.plugin.Messages", "1.0", {kUserMessagesId}},
              [this](KPIM::Context* owner, void** out) {
                *out = static_cast<KPIM::Plugin*>(new MessagesPlugin(owner, *this));
                return KPIM::kSuccess;
              });
}

}  // namespace playerx::session
