#include "playerx/app/reasons/ReasonFile.h"

#include <QFile>
#include <QSaveFile>
#include <nlohmann/json.hpp>
#include <utility>

namespace playerx::reasons {

using model::ItemState;
using Json = nlohmann::json;

namespace {

constexpr char kFileName[] = "failures.json";

/// More than a queue of failed films needs.
constexpr qint64 kMostBytes = qint64{64} << 20;

/// The ids of the queue are those of one run. A protected item may have no address.
std::string keyOf(const ItemState& item) {
  if (item.url.empty()) return item.provider + "\n" + item.title;
  const std::optional<Address> address = parseAddress(item.url);
  return address ? address->remembered : item.url;
}

Json readJson(const std::filesystem::path& path) {
  std::error_code error;
  QFile file(QString::fromStdString(path.string()));
  if (!std::filesystem::is_regular_file(path, error) || !file.open(QIODevice::ReadOnly)) return {};
  const QByteArray content = file.read(kMostBytes);
  return Json::parse(content.begin(), content.end(), nullptr, /*allow_exceptions=*/false);
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

std::map<std::string, Explanation> readReasons(const std::filesystem::path& file) {
  std::map<std::string, Explanation> reasons;
  const Json content = readJson(file);
  if (!content.is_array()) return reasons;
  for (const Json& entry : content) {
    if (!entry.is_object()) continue;
    if (auto explanation = explanationOf(entry)) reasons[textOf(entry, "item")] = *explanation;
  }
  return reasons;
}

}  // namespace

ReasonFile::ReasonFile(const std::filesystem::path& dataFolder)
    : file_(dataFolder / kFileName), reasons_(readReasons(file_)) {}

std::optional<Explanation> ReasonFile::find(const ItemState& item) const {
  if (item.status != DownloadStatusFailed) return std::nullopt;
  const auto found = reasons_.find(keyOf(item));
  return found == reasons_.end() ? std::nullopt : std::optional(found->second);
}

void ReasonFile::note(const ItemState& failed, const Explanation& reason) {
  reasons_[keyOf(failed)] = reason;
}

void ReasonFile::save(const std::vector<ItemState>& queue) {
  std::map<std::string, Explanation> present;
  for (const ItemState& item : queue) {
    if (auto known = find(item)) present[keyOf(item)] = *std::move(known);
  }
  reasons_ = std::move(present);
  write();
}

void ReasonFile::write() const {
  Json content = Json::array();
  for (const auto& [item, reason] : reasons_) {
    content.push_back({{"item", item},
                       {"reason", static_cast<std::int32_t>(reason.reason)},
                       {"happened", reason.happened},
                       {"advice", reason.advice}});
  }
  QSaveFile file(QString::fromStdString(file_.string()));
  if (!file.open(QIODevice::WriteOnly)) return;
  file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
  // Titles and words of servers may hold bytes that are not UTF-8.
  const std::string text = content.dump(1, ' ', false, Json::error_handler_t::replace);
  file.write(text.data(), static_cast<qint64>(text.size()));
  file.commit();
}

}  // namespace playerx::reasons
