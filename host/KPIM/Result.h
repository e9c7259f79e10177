#pragma once

#include <cstdint>

namespace KPIM {

/// Answer of a framework operation.
using VESK_RESULT = std::int32_t;

constexpr VESK_RESULT kSuccess = 0;           ///< done; outputs are set
constexpr VESK_RESULT kNoSuchPlugin = 1;      ///< no plug-in offers what was asked for
constexpr VESK_RESULT kLoadFailed = 2;        ///< the chosen plug-in could not be loaded
constexpr VESK_RESULT kUnknownInterface = 3;  ///< the plug-in does not offer this interface

}  // namespace KPIM
