#include <utility>

#include "KPIM/Context.h"
#include "playerx/framework/PluginExport.h"
#include "playerx/services/OnlineServices.h"
#include "playerx/settings/ServicesAddress.h"

namespace {

KPIM::Plugin* makePlugin(KPIM::Context* context) {
  playerx::JsonClient client(playerx::servicesAddress(), playerx::trustedAuthorities());
  return new playerx::OnlineServices(context, std::move(client));
}

}  // namespace

extern "C" __attribute__((visibility("default"))) KPIM::VESK_RESULT getPlugin(
    KPIM::Context* context, void** out) {
  return playerx::exportPlugin(out, [context] { return makePlugin(context); });
}
