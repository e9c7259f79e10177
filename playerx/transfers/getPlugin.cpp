#include "KPIM/Context.h"
#include "playerx/transfers/TransfersPlugin.h"

extern "C" __attribute__((visibility("default"))) KPIM::VESK_RESULT getPlugin(
    KPIM::Context* context, void** out) {
  try {
    *out = static_cast<KPIM::Plugin*>(new playerx::transfers::TransfersPlugin(context));
    return KPIM::kSuccess;
  } catch (...) {
    return KPIM::kLoadFailed;
  }
}
