#include "KPIM/Context.h"
#include "KPX/KPXPreferences.h"
#include "playerx/services/OnlineServices.h"
#include "playerx/settings/PreferenceKeys.h"

namespace {

std::string preference(const char* key) {
  return KPXPreferences::getPreferenceHelper<QString>(key, QString(), true).toStdString();
}

}  // namespace

extern "C" KPIM::VESK_RESULT getPlugin(KPIM::Context* context, void** out) {
  playerx::JsonClient client(preference(playerx::kServicesAddressKey),
                             preference(playerx::kCaFileKey));
  *out = static_cast<KPIM::Plugin*>(new playerx::OnlineServices(context, std::move(client)));
  return KPIM::kSuccess;
}
