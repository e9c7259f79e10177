#include "plugin/ServicesLookup.h"

#include "VeskPlayerX/InterfaceIds.h"

namespace plugin {

std::shared_ptr<ServicesLookup::Service> ServicesLookup::find() {
  {
    const std::lock_guard lock(mutex_);
    if (service_) return service_;
  }
  // Loading may take its time and runs foreign code: without the lock, at worst twice.
  auto service = std::make_shared<Service>(VeskPlayerX::DIN_ZPSServices);
  if (!loadService(*service, context_, VeskPlayerX::DIN_ZPSServices)) return nullptr;
  const std::lock_guard lock(mutex_);
  if (!service_) service_ = std::move(service);
  return service_;
}

}  // namespace plugin
