#include "KPIM/Plugin.h"

#include <atomic>

#include "KPIM/Context.h"
#include "playerx/framework/PluginDirectory.h"

namespace KPIM {

struct Plugin::Impl {
  explicit Impl(Context* given) : context(given) {}

  Context* const context;
  std::atomic<int> holds{1};
};

Plugin::Plugin(Context* context) : impl_(std::make_unique<Impl>(context)) {}

Plugin::~Plugin() = default;

int Plugin::kpimRetain() { return impl_->holds.fetch_add(1) + 1; }

int Plugin::kpimRelease() {
  const int left = impl_->holds.fetch_sub(1) - 1;
  if (left == 0) delete this;
  return left;
}

int Plugin::kpimHoldCount() { return impl_->holds.load(); }

const PluginInfo* Plugin::kpimGetPluginInfo() {
  const auto* directory = dynamic_cast<const playerx::PluginDirectory*>(impl_->context);
  return directory == nullptr ? nullptr : directory->infoOf(*this);
}

Context* Plugin::kpimGetPluginContext() { return impl_->context; }

VESK_RESULT Plugin::kpimGetInterface(std::string /*id*/, void** /*out*/) {
  return kUnknownInterface;
}

}  // namespace KPIM
