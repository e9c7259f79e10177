#include "playerx/app/session/Leftovers.h"

#include <algorithm>
#include <optional>
#include <set>

#include "playerx/transfers/Address.h"
#include "playerx/transfers/Part.h"
#include "playerx/transfers/PartState.h"
#include "playerx/transfers/SmallFile.h"

namespace playerx::session {

namespace fs = std::filesystem;
using transfers::PartPaths;

namespace {

bool isPartial(const fs::path& file) {
  const std::string extension = file.extension();
  return extension == ".part" || extension == ".json" || extension == ".rights";
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

/// Where the films of the queue come from; every authorisation gives a protected one another
/// address of the same place.
std::set<std::string> placesOf(const std::vector<model::ItemState>& queue) {
  std::set<std::string> places;
  for (const model::ItemState& item : queue) {
    if (const std::optional<Address> address = parseAddress(item.url))
      places.insert(address->place);
  }
  return places;
}

}  // namespace

std::vector<Leftover> findLeftovers(const fs::path& folder,
                                    const std::vector<model::ItemState>& queue) {
  const std::set<std::string> places = placesOf(queue);
  const bool isOneUnnamed =
      std::any_of(queue.begin(), queue.end(), [](const auto& item) { return item.url.empty(); });
  std::vector<Leftover> leftovers;
  for (const std::string& key : keysIn(folder)) {
    const PartPaths paths{folder, key};
    const auto state = transfers::readState(transfers::readSmallFile(paths.state()));
    std::error_code error;
    const bool isWanted = (state && places.contains(state->place)) ||
                          (isOneUnnamed && fs::exists(paths.rights(), error));
    if (isWanted) continue;
    leftovers.push_back({key, state ? state->address : "",
                         sizeOf(paths.bytes()) + sizeOf(paths.state()) + sizeOf(paths.rights())});
  }
  return leftovers;
}

bool deleteLeftover(const fs::path& folder, const Leftover& leftover) {
  int error = 0;
  const auto part = transfers::Part::claim({folder, leftover.key}, error);
  // A part without bytes takes its files with it when it is let go.
  if (part) part->forgetCompletion();
  return part != nullptr;
}

}  // namespace playerx::session
