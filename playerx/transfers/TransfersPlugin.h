#pragma once

#include <string>

#include "KPIM/Plugin.h"
#include "playerx/transfers/Downloads.h"

namespace playerx::transfers {

/// The download library as a plug-in of the player. Its last hold must not be given back within a
/// report. Threads: as the interfaces that it gives out say.
class TransfersPlugin : public KPIM::Plugin {
 public:
  /// Starts the library's threads; throws when there are none to be had.
  explicit TransfersPlugin(KPIM::Context* context) : Plugin(context) {}

  KPIM::VESK_RESULT kpimGetInterface(std::string id, void** out) override;

 private:
  Downloads downloads_;
};

}  // namespace playerx::transfers
