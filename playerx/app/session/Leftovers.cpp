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
  return extension == ".part" || extension == ".json";
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

/// The beginnings of the names of all partials that films of the queue may have; every
/// authorisation gives a protected one another address of the same place.
std::set<std::string> keysOf(const std::vector<model::ItemState>& queue) {
  std::set<std::string> keys;
  for (const model::ItemState& item : queue) {
    const std::optional<Address> address = parseAddress(item.url);
    if (address) keys.insert(transfers::digestOf(address->place));
  }
  return keys;
}

/// Several partials of one place are numbered behind a dash.
std::string withoutNumber(const std::string& key) { return key.substr(0, key.find('-')); }

}  // namespace

std::vector<Leftover> findLeftovers(const fs::path& folder,
                                    const std::vector<model::ItemState>& queue) {
  const bool isOneUnnamed =
      std::any_of(queue.begin(), queue.end(), [](const auto& item) { return item.url.empty(); });
  if (isOneUnnamed) return {};
  const std::set<std::string> wanted = keysOf(queue);
  std::vector<Leftover> leftovers;
  for (const std::string& key : keysIn(folder)) {
    if (wanted.contains(withoutNumber(key))) continue;
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
