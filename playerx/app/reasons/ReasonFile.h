#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "playerx/app/model/ItemState.h"
#include "playerx/app/reasons/Reason.h"

namespace playerx::reasons {

/// Reasons by the item's key, which stays the same from run to run.
using ReasonMap = std::map<std::string, Explanation>;

/// The reasons as JSON text, and back; entries that are not reasons are left out.
std::string writeReasons(const ReasonMap& reasons);
ReasonMap readReasons(const std::string& json);

/// Why items failed, kept in a file beside the queue, which has no room for it. Only its owner can
/// read the file; one that is damaged counts as empty, and one that cannot be written only loses
/// reasons. Used by one thread.
class ReasonFile {
 public:
  static constexpr char kFileName[] = "failures.json";

  /// Reads the file of this data folder, if there is one.
  explicit ReasonFile(const std::filesystem::path& dataFolder);

  /// The reason of a failed item; nullopt when it is not known or the item has not failed.
  std::optional<Explanation> find(const model::ItemState& item) const;

  /// Notes the reason of an item that has failed; `save` makes it last.
  void note(const model::ItemState& failed, const Explanation& reason);

  /// Saves the reasons of the failed items of `queue`; those of items that are no longer there, or
  /// are retried, are dropped. Writes the whole file, so it is called once for several notes.
  void save(const std::vector<model::ItemState>& queue);

 private:
  void write() const;

  const std::filesystem::path file_;
  ReasonMap reasons_;
};

}  // namespace playerx::reasons
