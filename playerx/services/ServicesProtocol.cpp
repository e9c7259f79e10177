#include "playerx/services/ServicesProtocol.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <nlohmann/json.hpp>

#include "kvpm/StringTools.h"

namespace playerx {

namespace {

using Json = nlohmann::json;
using kvpm::StringTools;

/// The services' answers nest three deep. Parsing one that nests very deep would cost far more than
/// sending it.
constexpr int kDeepest = 16;

bool nestsTooDeep(const std::string& text) {
  int depth = 0;
  bool isInText = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (isInText) {
      if (c == '\\') ++i;
      isInText = c != '"';
    } else if (c == '[' || c == '{') {
      if (++depth > kDeepest) return true;
    } else if (c == ']' || c == '}') {
      --depth;
    } else {
      isInText = c == '"';
    }
  }
  return false;
}

Json parse(const std::string& text) {
  if (nestsTooDeep(text)) return Json(Json::value_t::discarded);
  return Json::parse(text, nullptr, false);
}

std::string print(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// The text under `key`; nullopt when it is missing, not a text, empty where that is not allowed,
/// or longer than `longest`.
std::optional<std::string> textOf(const Json& object, const char* key, std::size_t longest,
                                  bool mayBeEmpty = false) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_string()) return std::nullopt;
  std::string text = *found;
  if (text.size() > longest || (text.empty() && !mayBeEmpty)) return std::nullopt;
  return text;
}

template <class Number>
std::optional<Number> numberOf(const Json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_number_integer()) return std::nullopt;
  if (found->is_number_unsigned()) {
    const auto value = found->get<std::uint64_t>();
    if (value > static_cast<std::uint64_t>(std::numeric_limits<Number>::max())) return std::nullopt;
    return static_cast<Number>(value);
  }
  const auto value = found->get<std::int64_t>();  // negative: others are unsigned
  if (value < static_cast<std::int64_t>(std::numeric_limits<Number>::min())) return std::nullopt;
  return static_cast<Number>(value);
}

/// Whether a title, which names the file of its film, would lead out of the media folder. The
/// download manager takes both slashes for separators.
bool leadsOut(std::string title) {
  std::replace(title.begin(), title.end(), '\\', '/');
  const std::filesystem::path path = title;
  return std::find(path.begin(), path.end(), "..") != path.end();
}

std::unique_ptr<VeskDrmTicketData> recordOf(const Json& object) {
  if (!object.is_object()) return nullptr;
  const auto ticket = textOf(object, "ticket", kMaxTicketText);
  const auto title = textOf(object, "title", kMaxName);
  const auto usageId = numberOf<std::int32_t>(object, "usageId");
  if (!ticket || !title || !usageId || leadsOut(*title)) return nullptr;
  auto record = std::make_unique<VeskDrmTicketData>();
  record->ticket = *ticket;
  record->title = StringTools::stringToWString(*title);
  record->contentEncryptionUsageId = *usageId;
  record->contentProviderDisplayName =
      StringTools::stringToWString(textOf(object, "provider", kMaxName, true).value_or(""));
  record->version = textOf(object, "version", kMaxName).value_or("");
  return record;
}

void fail(VeskDrmDownloadAuthorization& answer, std::int32_t code, const std::string& details) {
  answer = {};
  answer.errorCode = code;
  answer.errorDetails = StringTools::stringToWString(details);
}

bool fillSuccess(const Json& object, VeskDrmDownloadAuthorization& answer) {
  const auto url = textOf(object, "url", kMaxAddress);
  const auto username = textOf(object, "username", kMaxName, true);
  const auto password = textOf(object, "password", kMaxName, true);
  const auto ticketId = numberOf<std::int32_t>(object, "ticketId");
  const auto size = numberOf<std::uint64_t>(object, "size");
  const auto rights = textOf(object, "rights", kMaxRights, true);
  if (!url || !username || !password || !ticketId || !size || !rights) return false;
  answer = {true, 0, L"", *username, *password, *url, *ticketId, *size, *rights};
  return true;
}

}  // namespace

std::string readTicketRequest(const std::string& fileContent) {
  return print({{"ticket", fileContent}});
}

std::optional<TicketRecords> readTicketAnswer(const std::string& json) {
  const Json answer = parse(json);
  if (!answer.is_object()) return std::nullopt;
  const auto list = answer.find("records");
  if (list == answer.end() || !list->is_array() || list->size() > kMaxRecords) return std::nullopt;
  TicketRecords records;
  for (const Json& entry : *list) {
    records.push_back(recordOf(entry));
    if (records.back() == nullptr) return std::nullopt;
  }
  return records;
}

std::string authorizeRequest(const std::string& ticket, int slot) {
  return print({{"ticket", ticket}, {"slot", slot}});
}

void authorizeAnswer(const std::string& json, VeskDrmDownloadAuthorization& answer) {
  const Json object = parse(json);
  const auto success = object.is_object() ? object.find("success") : object.end();
  if (success == object.end() || !success->is_boolean()) {
    return fail(answer, kServicesMalformed, "The online services gave no proper answer.");
  }
  if (success->get<bool>()) {
    if (fillSuccess(object, answer)) return;
    return fail(answer, kServicesMalformed, "The online services gave an incomplete answer.");
  }
  fail(answer, numberOf<std::int32_t>(object, "error").value_or(kServicesMalformed),
       textOf(object, "details", kMaxName, true).value_or(""));
}

std::string confirmRequest(std::int64_t ticketId, std::uint64_t bytes) {
  return print({{"ticketId", ticketId}, {"bytes", bytes}});
}

bool readyAnswer(const std::string& json) {
  const Json answer = parse(json);
  return answer.is_object() && answer.value("ready", Json()) == Json(true);
}

}  // namespace playerx
