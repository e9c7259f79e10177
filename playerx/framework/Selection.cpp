#include <QString>
#include <QVersionNumber>
#include <algorithm>
#include <utility>

#include "KPIM/Context.h"
#include "KPIM/PluginInfo.h"

namespace KPIM {
namespace {

// '1.0' and '1' are the same version.
QVersionNumber version(const PluginInfo& info) {
  return QVersionNumber::fromString(QString::fromStdString(info.version)).normalized();
}

}  // namespace

Context::PluginInterfaceFilter::PluginInterfaceFilter(std::string interfaceId)
    : interfaceId_(std::move(interfaceId)) {}

bool Context::PluginInterfaceFilter::accepts(const PluginInfo& info) const {
  return std::find(info.interfaces.begin(), info.interfaces.end(), interfaceId_) !=
         info.interfaces.end();
}

bool Context::SimplePluginInfoSelector::less(const PluginInfo& left,
                                             const PluginInfo& right) const {
  return version(left) < version(right);
}

}  // namespace KPIM
