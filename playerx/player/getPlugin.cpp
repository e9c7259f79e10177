#include "KPIM/Helper.h"
#include "KPX/KPXPreferences.h"
#include "playerx/framework/PluginExport.h"
#include "playerx/player/PlayerPlugin.h"
#include "playerx/settings/PreferenceKeys.h"
#include "playerx/transfers/TransferReports.h"

namespace {

unsigned long long sessionOf(KPIM::Context* context, const std::string& address) {
  KPIM::Helper<playerx::TransferReports> reports(playerx::DIN_TransferReports);
  const KPIM::Context::PluginInterfaceFilter filter(playerx::DIN_TransferReports);
  const KPIM::Context::SimplePluginInfoSelector selector;
  playerx::TransferReport report;
  const bool known =
      reports.loadPlugin(context, filter, selector, false) == KPIM::kSuccess &&
      (reports->findByAddress(address, &report) || reports->findByPath(address, &report));
  return known ? report.uid : 0;
}

KPIM::Plugin* makePlugin(KPIM::Context* context) {
  const QString command =
      KPXPreferences::getPreferenceHelper<QString>(playerx::kPlayerKey, QString(), true);
  return new playerx::PlayerPlugin(context, command, [context](const std::string& address) {
    return sessionOf(context, address);
  });
}

}  // namespace

extern "C" __attribute__((visibility("default"))) KPIM::VESK_RESULT getPlugin(
    KPIM::Context* context, void** out) {
  return playerx::exportPlugin(out, [context] { return makePlugin(context); });
}
