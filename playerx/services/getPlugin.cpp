#include "KPIM/Context.h"
#include "KPX/KPXPreferences.h"
#include "playerx/services/OnlineServices.h"
#include "playerx/settings/PreferenceKeys.h"

extern "C" KPIM::VESK_RESULT getPlugin(KPIM::Context* context, void** out) {
  const QString address =
      KPXPreferences::getPreferenceHelper<QString>(playerx::kServicesAddressKey, QString(), true);
  playerx::JsonClient client(address.toStdString(), playerx::trustedAuthorities());
  *out = static_cast<KPIM::Plugin*>(new playerx::OnlineServices(context, std::move(client)));
  return KPIM::kSuccess;
}
