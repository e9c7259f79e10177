#pragma once

#include "kvsc/UniqueFd.h"

namespace support {

using kvsc::UniqueFd;

}  // namespace support
