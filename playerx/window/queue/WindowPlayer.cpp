#include "playerx/window/queue/WindowPlayer.h"

#include <utility>

#include "VeskPlayerX/InterfaceIds.h"
#include "playerx/framework/OwnPlugin.h"

namespace playerx::window {

namespace {

/// Above that of the plug-in that plays with a program of the user's.
constexpr char kVersion[] = "2.0";

}  // namespace

WindowPlayer::WindowPlayer(std::function<void(const QString& location)> open)
    : open_(std::move(open)) {}

void WindowPlayer::offerTo(PluginContext& context) {
  offerOwn<VeskPlayerX::PlayerInterface>(
      context, {VeskPlayerX::kPlayerPluginId, kVersion, {VeskPlayerX::DIN_Player}}, *this);
}

}  // namespace playerx::window
