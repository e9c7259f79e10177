#include <utility>

#include "KPIM/Context.h"
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
  try {
    *out = makePlugin(context);
    return KPIM::kSuccess;
  } catch (...) {
    return KPIM::kLoadFailed;
  }
}
