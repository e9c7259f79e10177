#pragma once

#include <optional>
#include <string>

#include "playerx/app/reasons/Reason.h"
#include "playerx/transfers/TransferReports.h"

namespace playerx::reasons {

/// Why a transfer from `address` broke; nullopt when it did not.
std::optional<Explanation> explainTransfer(const TransferReport& report,
                                           const std::string& address);

}  // namespace playerx::reasons
