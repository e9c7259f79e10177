#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "playerx/app/model/ItemState.h"

namespace playerx::session {

/// What the download library keeps of a film that the queue does not know any more: bytes, state,
/// rights.
struct Leftover {
  std::string key;          ///< the name that its files share
  std::string address;      ///< empty when it is not known
  std::uint64_t bytes = 0;  ///< that its files take

  bool operator==(const Leftover&) const = default;
};

/// The leftovers among the unfinished films of this folder, sorted by key. A protected film that is
/// still to be authorised has no address yet: while one waits, no rights are taken for leftovers.
std::vector<Leftover> findLeftovers(const std::filesystem::path& folder,
                                    const std::vector<model::ItemState>& queue);

/// Deletes the files of a leftover. False while a transfer is still at work on them. Needs no space
/// on the disk.
bool deleteLeftover(const std::filesystem::path& folder, const Leftover& leftover);

}  // namespace playerx::session
