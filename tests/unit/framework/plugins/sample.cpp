#include "KPIM/Plugin.h"
#include "KPIM/PluginInfo.h"

namespace {

/// Offers the id under which it was loaded.
class Sample : public KPIM::Plugin {
 public:
  using Plugin::Plugin;

  KPIM::VESK_RESULT kpimGetInterface(std::string id, void** out) override {
    if (id != "sample") return KPIM::kUnknownInterface;
    *out = this;
    return KPIM::kSuccess;
  }
};

}  // namespace

extern "C" __attribute__((visibility("default"))) KPIM::VESK_RESULT getPlugin(
    KPIM::Context* context, void** out) {
  *out = new Sample(context);
  return KPIM::kSuccess;
}
