#include "playerx/window/queue/WindowPlayer.h"

#include <utility>

#include "VeskPlayerX/InterfaceIds.h"
#include "playerx/framework/PluginContext.h"

namespace playerx::window {

namespace {

/// Above that of the plug-in that plays with a program of the user's.
constexpr char kVersion[] = "2.0";

class PlayerFace : public KPIM::Plugin {
 public:
  PlayerFace(KPIM::Context* context, VeskPlayerX::PlayerInterface& player)
      : KPIM::Plugin(context), player_(player) {}

  KPIM::VESK_RESULT kpimGetInterface(std::string id, void** out) override {
    if (id != VeskPlayerX::DIN_Player) return KPIM::kUnknownInterface;
    *out = &player_;
    return KPIM::kSuccess;
  }

 private:
  VeskPlayerX::PlayerInterface& player_;
};

}  // namespace

WindowPlayer::WindowPlayer(std::function<void(const QString& location)> open)
    : open_(std::move(open)) {}

void WindowPlayer::offerTo(PluginContext& context) {
  context.add({VeskPlayerX::kPlayerPluginId, kVersion, {VeskPlayerX::DIN_Player}},
              [this](KPIM::Context* owner, void** out) {
                *out = static_cast<KPIM::Plugin*>(new PlayerFace(owner, *this));
                return KPIM::kSuccess;
              });
}

}  // namespace playerx::window
