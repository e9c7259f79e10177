#include "playerx/transfers/TransfersPlugin.h"

namespace playerx::transfers {

KPIM::VESK_RESULT TransfersPlugin::kpimGetInterface(std::string id, void** out) {
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

}  // namespace playerx::transfers
