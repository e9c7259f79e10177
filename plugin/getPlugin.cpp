#include "KPIM/Plugin.h"
#include "plugin/DownloadManager.h"

/// The one function that the module exports. It throws nothing: a plug-in that cannot be built is
/// one that cannot be loaded.
extern "C" __attribute__((visibility("default"))) KPIM::VESK_RESULT getPlugin(
    KPIM::Context* context, void** out) {
  try {
    *out = static_cast<KPIM::Plugin*>(new DownloadManager(context));
    return KPIM::kSuccess;
  } catch (...) {
    return KPIM::kLoadFailed;
  }
}
