#pragma once

#include <memory>

#include "KPIM/Helper.h"
#include "VeskPlayerX/ZPSServicesInterface.h"
#include "kvpm/Mutex.h"

namespace plugin {

/// The online services, looked up at the first use and kept from then on.
///
/// Safe on all threads. Services that cannot be found are looked up anew at the next use.
class ServicesLookup {
 public:
  using Service = KPIM::Helper<VeskPlayerX::ZPSServicesInterface>;

  /// `context` is not owned and outlives this object; in a null one there are no services.
  explicit ServicesLookup(KPIM::Context* context) : context_(context) {}
  ServicesLookup(const ServicesLookup&) = delete;
  ServicesLookup& operator=(const ServicesLookup&) = delete;

  /// The services, held as long as the result lives; null when they are not there.
  std::shared_ptr<Service> find();

 private:
  std::shared_ptr<Service> known() const;

  KPIM::Context* const context_;
  mutable kvpm::Mutex mutex_;
  std::shared_ptr<Service> service_ KVPM_GUARDED_BY(mutex_);
};

}  // namespace plugin
