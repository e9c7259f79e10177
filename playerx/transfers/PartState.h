#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "playerx/transfers/Validator.h"

namespace playerx::transfers {

/// What is kept on disk beside a partial file, so that a later session knows what it is. A record;
/// holds no credentials.
struct PartState {
  std::string address;  ///< `Address::remembered` of the session that wrote it
  std::string place;    ///< `Address::place`

  bool answered = false;  ///< a response was accepted: the bytes belong to `validator`
  std::optional<std::uint64_t> total;
  Validator validator;

  /// The partial's first bytes that have reached the disk, for the case that the machine went down
  /// (`boot` is not the present one) and left holes behind them.
  std::uint64_t durable = 0;
  std::string boot;

  bool operator==(const PartState&) const = default;
};

/// The state as JSON text, and back; nullopt when `json` is not such a text, of whatever kind.
std::string writeState(const PartState& state);
std::optional<PartState> readState(std::string_view json);

/// The state kept in a file; nullopt if absent that can be read.
std::optional<PartState> loadState(const std::filesystem::path& file);

/// Puts a state in the place of the file, whole or not at all, readable by its owner alone. Returns
/// 0 or an error number (`errno` values); then the old file is as it was. Does not wait for the
/// disk.
int storeState(const std::filesystem::path& file, const PartState& state);

}  // namespace playerx::transfers
