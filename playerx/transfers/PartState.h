#pragma once

#include <cstdint>
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

  /// Set once every byte is there and on the disk, just before the file is moved: where to, the
  /// size, and the number that the file system knows it by (0: not yet known). Who finds such a
  /// state finds the file at `target`, or at `source`, or still as the partial.
  std::string target;
  std::string source;  ///< the place it is moved from when that is not the partial; else empty
  std::string wished;  ///< output name that was asked for; differs from the target's when taken
  std::uint64_t size = 0;
  std::uint64_t inode = 0;
  bool noted = false;  ///< the completion has been taken note of; kept in case it was lost again

  bool isComplete() const { return !target.empty(); }
  bool operator==(const PartState&) const = default;
};

/// The state as JSON text, and back; none when `json` is not such a text, of whatever kind.
std::string writeState(const PartState& state);
std::optional<PartState> readState(std::string_view json);

}  // namespace playerx::transfers
