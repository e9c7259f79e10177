// The base of plug-ins and how they are chosen.

#include <QString>
#include <QVersionNumber>
#include <algorithm>
#include <atomic>
#include <utility>

#include "KPIM/Context.h"
#include "KPIM/Plugin.h"
#include "KPIM/PluginInfo.h"

namespace KPIM {

struct Plugin::Impl {
  Context* const context;
  std::atomic<int> references = 1;
};

Plugin::Plugin(Context* context) : impl_(new Impl{context}) {}
Plugin::~Plugin() = default;

int Plugin::kpimRetain() { return ++impl_->references; }

int Plugin::kpimRelease() {
  const int left = --impl_->references;
  if (left == 0) delete this;
  return left;
}

int Plugin::kpimHoldCount() { return impl_->references; }
const PluginInfo* Plugin::kpimGetPluginInfo() { return nullptr; }
Context* Plugin::kpimGetPluginContext() { return impl_->context; }
VESK_RESULT Plugin::kpimGetInterface(std::string, void**) { return kUnknownInterface; }

Context::PluginInterfaceFilter::PluginInterfaceFilter(std::string interfaceId)
    : interfaceId_(std::move(interfaceId)) {}

bool Context::PluginInterfaceFilter::accepts(const PluginInfo& info) const {
  const auto& offered = info.interfaces;
  return std::find(offered.begin(), offered.end(), interfaceId_) != offered.end();
}

bool Context::SimplePluginInfoSelector::less(const PluginInfo& left,
                                             const PluginInfo& right) const {
  const auto version = [](const PluginInfo& info) {
    return QVersionNumber::fromString(QString::fromStdString(info.version));
  };
  return version(left) < version(right);
}

}  // namespace KPIM
