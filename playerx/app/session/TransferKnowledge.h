#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "playerx/app/model/ItemState.h"
#include "playerx/app/reasons/FailureReason.h"

namespace playerx {

class PluginContext;

/// What the download library knows about transfers, asked on the main thread.
struct TransferKnowledge {
  /// Why the last transfer of the item failed; none when it did not get that far.
  std::function<std::optional<FailureReason>(const ItemState&)> reasonOf;

  /// Bytes of the item that have arrived; none without a transfer.
  std::function<std::optional<std::uint64_t>(const ItemState&)> bytesOf;
};

/// The knowledge of the download library that `context` offers, which is loaded when it is first
/// asked for; the functions hold it.
TransferKnowledge transferKnowledge(PluginContext& context);

/// Has the download library trust the authorities in this PEM file; an empty name leaves it as it
/// is.
void trustForTransfers(PluginContext& context, const std::string& caFile);

}  // namespace playerx
