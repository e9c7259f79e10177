#pragma once

#include <optional>
#include <string>

#include "playerx/app/reasons/FailureReason.h"
#include "playerx/transfers/TransferReports.h"

namespace playerx {

/// The reason that a broken transfer gives; none when it gives none. `host` is that of the address.
std::optional<FailureReason> reasonFromTransfer(const TransferReport& report,
                                                const std::string& host);

}  // namespace playerx
