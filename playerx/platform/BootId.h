#pragma once

#include <string>

namespace playerx {

/// Names the machine's present run: another text after every start of the system. Empty when the
/// system does not tell. The environment variable VESK_BOOT_ID, when set, answers instead: a test
/// of power cuts runs all its images under one start of the machine. From any thread.
const std::string& bootId();

}  // namespace playerx
