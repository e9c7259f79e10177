#pragma once

#include "playerx/platform/Descriptor.h"

namespace playerx::transfers {

/// Notices that the machine gets an address, a route or a cable: what could not be reached may be
/// reached now. Notices nothing where the system does not tell. Used by one thread.
class NetworkWatch {
 public:
  NetworkWatch();

  /// To be polled for reading; -1 where the system does not tell.
  int descriptor() const { return socket_.get(); }

  /// Whether something has come since the last call. Does not wait.
  bool takeArrival();

 private:
  Descriptor socket_;
};

}  // namespace playerx::transfers
