#include "KPIM/Context.h"
#include "playerx/framework/PluginExport.h"
#include "playerx/transfers/Downloads.h"

namespace playerx::transfers {
namespace {

/// The download library as a plug-in of the player. Its last hold must not be given back within a
/// report. Threads: as the interfaces that it offers say.
class TransfersPlugin : public KPIM::Plugin {
 public:
  /// Starts the library's threads; throws when the system refuses one.
  explicit TransfersPlugin(KPIM::Context* context) : Plugin(context) {}

  KPIM::VESK_RESULT kpimGetInterface(std::string id, void** out) override {
    if (id == KPB::DIN_Download) {
      return offerInterface<KPB::DownloadInterface>(&downloads_, out);
    }
    if (id == DIN_TransferReports) return offerInterface(&downloads_.reports(), out);
    if (id == DIN_TransferSettings) return offerInterface<TransferSettings>(&downloads_, out);
    if (id == DIN_FilmRecovery) return offerInterface(&downloads_.recovery(), out);
    return Plugin::kpimGetInterface(id, out);
  }

 private:
  Downloads downloads_;
};

}  // namespace
}  // namespace playerx::transfers

extern "C" __attribute__((visibility("default"))) KPIM::VESK_RESULT getPlugin(
    KPIM::Context* context, void** out) {
  return playerx::exportPlugin(
      out, [context] { return new playerx::transfers::TransfersPlugin(context); });
}
