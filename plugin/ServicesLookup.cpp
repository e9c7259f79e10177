#include "plugin/ServicesLookup.h"

#include <utility>

#include "VeskPlayerX/InterfaceIds.h"

namespace plugin {

using VeskPlayerX::ZPSServicesInterface;

std::shared_ptr<ServicesLookup::Service> ServicesLookup::find() {
  if (auto service = known()) return service;
  // Loading may take its time and runs foreign code: without the lock, at worst twice.
  std::shared_ptr<Service> service =
      KPIM::load<ZPSServicesInterface>(context_, VeskPlayerX::DIN_ZPSServices);
  if (service == nullptr) return nullptr;
  const kvpm::MutexLock lock(mutex_);
  if (service_ == nullptr) service_ = std::move(service);
  return service_;
}

std::shared_ptr<ServicesLookup::Service> ServicesLookup::known() const {
  const kvpm::MutexLock lock(mutex_);
  return service_;
}

}  // namespace plugin
