#include "playerx/player/PlayerPlugin.h"

#include <utility>

#include "KPIM/Helper.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "playerx/framework/PluginExport.h"
#include "playerx/framework/UserMessages.h"
#include "playerx/player/PlayerProgram.h"

namespace playerx {

PlayerPlugin::PlayerPlugin(KPIM::Context* context, QString command, SessionLookup sessionOf)
    : KPIM::Plugin(context), command_(std::move(command)), sessionOf_(std::move(sessionOf)) {}

KPIM::VESK_RESULT PlayerPlugin::kpimGetInterface(std::string id, void** out) {
  if (id != VeskPlayerX::DIN_Player) return KPIM::kUnknownInterface;
  return offerInterface<VeskPlayerX::PlayerInterface>(this, out);
}

void PlayerPlugin::openMedia(const QString& location) {
  const std::optional<QStringList> program = playerProgram(command_, location);
  const long long pid = program ? startProgram(*program) : 0;
  if (pid == 0) {
    const QString sentence = programName(command_) +
                             " could not be started; install it, or name another program with "
                             "--player.";
    return withMessages([&](UserMessages& messages) { messages.tellUser(sentence.toStdString()); });
  }
  {
    const GuardLock lock(mutex_);
    playing_ = PlayingProgram{pid, location};
  }
  const QString sentence = "Playing " + location + " with " + program->first() + ".";
  withMessages([&](UserMessages& messages) { messages.tellUser(sentence.toStdString()); });
}

unsigned long long PlayerPlugin::currentMediaId() {
  std::string location;
  {
    const GuardLock lock(mutex_);
    if (!playing_ || !isAlive(playing_->pid)) return 0;
    location = playing_->location.toStdString();
  }
  return sessionOf_(location);
}

void PlayerPlugin::withMessages(const std::function<void(UserMessages&)>& use) {
  KPIM::Helper<UserMessages> messages(kUserMessagesId);
  const KPIM::Context::PluginInterfaceFilter filter(kUserMessagesId);
  const KPIM::Context::SimplePluginInfoSelector selector;
  const auto found = messages.loadPlugin(kpimGetPluginContext(), filter, selector, true);
  if (found == KPIM::kSuccess) use(*messages.get());
}

}  // namespace playerx
