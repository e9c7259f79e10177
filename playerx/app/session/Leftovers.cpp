#include "playerx/app/session/Leftovers.h"

#include <algorithm>
#include <optional>
#include <set>

#include "playerx/transfers/Address.h"
#include "playerx/transfers/FilmMark.h"
#include "playerx/transfers/Part.h"
#include "playerx/transfers/PartState.h"

namespace playerx::session {

namespace fs = std::filesystem;
using transfers::PartPaths;

namespace {

bool isPartial(const fs::path& file) {
  const std::string extension = file.extension();
  return extension == PartPaths::kBytesExtension || extension == PartPaths::kStateExtension;
}

std::set<std::string> keysIn(const fs::path& folder) {
  std::set<std::string> keys;
  std::error_code failure;
  for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end;
       entry.increment(failure)) {
    if (isPartial(entry->path())) keys.insert(entry->path().stem());
  }
  return keys;
}

std::uint64_t sizeOf(const fs::path& file) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(file, error);
  return error ? 0 : size;
}

/// Drops the keys of the partials that the film may have; every authorisation gives a protected one
/// another address of the same place.
void dropKeysOf(const model::ItemState& film, std::set<std::string>& keys) {
  const std::optional<Address> address = parseAddress(film.url);
  if (!address) return;
  const std::string wanted = transfers::digestOf(address->place);
  std::erase_if(keys,
                [&wanted](const std::string& key) { return transfers::placeOfKey(key) == wanted; });
}

/// Drops the keys that films of the queue may have. The few that are unfinished come first: as a
/// rule they account for all keys, and the others need not be looked at.
void dropKeysOf(const std::vector<model::ItemState>& queue, std::set<std::string>& keys) {
  for (const bool isUnfinished : {true, false}) {
    for (const model::ItemState& film : queue) {
      if (keys.empty()) return;
      if (model::isUnfinished(film.status) == isUnfinished) dropKeysOf(film, keys);
    }
  }
}

}  // namespace

std::vector<Leftover> findLeftovers(const fs::path& folder,
                                    const std::vector<model::ItemState>& queue) {
  const bool isOneUnnamed =
      std::any_of(queue.begin(), queue.end(), [](const auto& item) { return item.url.empty(); });
  if (isOneUnnamed) return {};
  std::set<std::string> keys = keysIn(folder);
  dropKeysOf(queue, keys);
  std::vector<Leftover> leftovers;
  for (const std::string& key : keys) {
    const PartPaths paths{folder, key};
    const auto state = transfers::loadState(paths.state());
    leftovers.push_back(
        {key, state ? state->address : "", sizeOf(paths.bytes()) + sizeOf(paths.state())});
  }
  return leftovers;
}

bool deleteLeftover(const fs::path& folder, const Leftover& leftover) {
  const PartPaths paths{folder, leftover.key};
  int failure = 0;
  const auto part = transfers::Part::claim(paths, failure);
  if (!part) return false;
  part->file().cut(0);
  std::error_code error;
  fs::remove(paths.state(), error);
  fs::remove(paths.bytes(), error);
  return true;
}

}  // namespace playerx::session
