#include <memory>
#include <new>
#include <string>

#include "KPIM/Context.h"
#include "KPIM/Plugin.h"
#include "playerx/transfers/Downloads.h"

namespace playerx::transfers {
namespace {

/// The download library as a plug-in of the player. Its last hold must not be given back within a
/// report.
class TransfersPlugin : public KPIM::Plugin {
 public:
  explicit TransfersPlugin(KPIM::Context* context) : Plugin(context) {}

  KPIM::VESK_RESULT kpimGetInterface(std::string id, void** out) override {
    if (id == KPB::DIN_Download) {
      *out = static_cast<KPB::DownloadInterface*>(&downloads_);
    } else if (id == DIN_TransferReports) {
      *out = &downloads_.reports();
    } else if (id == DIN_TransferSettings) {
      *out = static_cast<TransferSettings*>(&downloads_);
    } else {
      return Plugin::kpimGetInterface(id, out);
    }
    return KPIM::kSuccess;
  }

 private:
  Downloads downloads_;
};

}  // namespace
}  // namespace playerx::transfers

extern "C" __attribute__((visibility("default"))) KPIM::VESK_RESULT getPlugin(
    KPIM::Context* context, void** out) {
  try {
    *out = static_cast<KPIM::Plugin*>(new playerx::transfers::TransfersPlugin(context));
    return KPIM::kSuccess;
  } catch (const std::exception&) {
    return KPIM::kLoadFailed;
  }
}
