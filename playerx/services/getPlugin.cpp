#include <utility>

#include "KPIM/Context.h"
#include "KPX/KPXPreferences.h"
#include "playerx/services/OnlineServices.h"
#include "playerx/settings/PreferenceKeys.h"

namespace {

KPIM::Plugin* makePlugin(KPIM::Context* context) {
  const QString address =
      KPXPreferences::getPreferenceHelper<QString>(playerx::kServicesAddressKey, QString(), true);
  playerx::JsonClient client(address.toStdString(), playerx::trustedAuthorities());
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
