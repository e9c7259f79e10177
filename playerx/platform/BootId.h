#pragma once

#include <string>

namespace playerx {

/// Identifies the present boot of the machine: a different text after each one. Empty when the
/// system has none. The environment variable VESK_BOOT_ID, when set, replaces it: a test of power
/// cuts runs all its disk images under one boot. May be called from any thread.
const std::string& bootId();

}  // namespace playerx
