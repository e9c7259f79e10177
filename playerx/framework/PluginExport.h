#pragma once

#include "KPIM/Plugin.h"

namespace playerx {

/// What a library's `getPlugin` does: has `make` build the plug-in and stores it in `*out`. Nothing
/// that `make` throws leaves it; without a place for the result nothing is built.
template <class Make>
KPIM::VESK_RESULT exportPlugin(void** out, Make make) noexcept {
  if (out == nullptr) return KPIM::kLoadFailed;
  try {
    *out = static_cast<KPIM::Plugin*>(make());
    return KPIM::kSuccess;
  } catch (...) {
    return KPIM::kLoadFailed;
  }
}

/// What `kpimGetInterface` answers with an interface that the plug-in has: stores it in `*out`,
/// unless there is no place for it.
template <class Interface>
KPIM::VESK_RESULT offerInterface(Interface* offered, void** out) {
  if (out == nullptr) return KPIM::kUnknownInterface;
  *out = offered;
  return KPIM::kSuccess;
}

}  // namespace playerx
