#include "playerx/app/reasons/ReasonFile.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "playerx/platform/SmallFile.h"

namespace playerx::reasons {

using model::ItemState;
using Json = nlohmann::json;

namespace {

/// More than a queue of failed films needs.
constexpr std::size_t kMostBytes = std::size_t{64} << 20U;

/// The ids of the queue are those of one run. A protected item may have no address.
std::string keyOf(const ItemState& item) {
  if (item.url.empty()) return item.provider + "\n" + item.title;
  const std::optional<Address> address = parseAddress(item.url);
  return address ? address->remembered : item.url;
}

std::string textOf(const Json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_string() ? found->get<std::string>() : "";
}

std::optional<Explanation> explanationOf(const Json& entry) {
  const auto reason = entry.find("reason");
  if (reason == entry.end() || !reason->is_number_integer()) return std::nullopt;
  const Explanation explanation{static_cast<Reason>(reason->get<std::int32_t>()),
                                textOf(entry, "happened"), textOf(entry, "advice")};
  if (explanation.happened.empty()) return std::nullopt;
  return explanation;
}

}  // namespace

std::string writeReasons(const ReasonMap& reasons) {
  Json content = Json::array();
  for (const auto& [item, reason] : reasons) {
    content.push_back({{"item", item},
                       {"reason", static_cast<std::int32_t>(reason.reason)},
                       {"happened", reason.happened},
                       {"advice", reason.advice}});
  }
  // Titles and words of servers may hold bytes that are not UTF-8.
  return content.dump(1, ' ', false, Json::error_handler_t::replace);
}

ReasonMap readReasons(const std::string& json) {
  ReasonMap reasons;
  const Json content = Json::parse(json, nullptr, /*allow_exceptions=*/false);
  if (!content.is_array()) return reasons;
  for (const Json& entry : content) {
    if (!entry.is_object()) continue;
    if (auto explanation = explanationOf(entry)) reasons[textOf(entry, "item")] = *explanation;
  }
  return reasons;
}

ReasonFile::ReasonFile(const std::filesystem::path& dataFolder)
    : file_(dataFolder / kFileName), reasons_(readReasons(readSmallFile(file_, kMostBytes))) {}

std::optional<Explanation> ReasonFile::find(const ItemState& item) const {
  if (item.status != DownloadStatusFailed) return std::nullopt;
  const auto found = reasons_.find(keyOf(item));
  return found == reasons_.end() ? std::nullopt : std::optional(found->second);
}

void ReasonFile::note(const ItemState& failed, const Explanation& reason) {
  reasons_[keyOf(failed)] = reason;
}

void ReasonFile::save(const std::vector<ItemState>& queue) {
  ReasonMap present;
  for (const ItemState& item : queue) {
    if (auto known = find(item)) present[keyOf(item)] = *std::move(known);
  }
  reasons_ = std::move(present);
  write();
}

void ReasonFile::write() const { replaceSmallFile(file_, writeReasons(reasons_)); }

}  // namespace playerx::reasons
