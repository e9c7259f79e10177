#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "playerx/app/model/ItemState.h"

namespace playerx::session {

/// What the download library keeps of a film that the queue does not know any more: bytes with
/// their state.
struct Leftover {
  std::string key;          ///< the name that its files share
  std::string address;      ///< empty when it is not known
  std::uint64_t bytes = 0;  ///< that its files take

  bool operator==(const Leftover&) const = default;
};

/// The leftovers among the unfinished films of this folder, sorted by key: those that come from a
/// place of which the queue has no film. None while a protected film waits for its authorisation,
/// which gives it its address: what there is may be its own.
std::vector<Leftover> findLeftovers(const std::filesystem::path& folder,
                                    const std::vector<model::ItemState>& queue);

/// Deletes the files of a leftover. False while a transfer is still at work on them. Needs no space
/// on the disk.
bool deleteLeftover(const std::filesystem::path& folder, const Leftover& leftover);

}  // namespace playerx::session
