#include "playerx/transfers/PartState.h"

#include <nlohmann/json.hpp>

#include "playerx/platform/SmallFile.h"

namespace playerx::transfers {
namespace {

using nlohmann::json;

constexpr int kStateFormat = 1;
constexpr int kIndent = 1;

std::string textOf(const json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

bool flagOf(const json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_boolean() && found->get<bool>();
}

std::optional<std::uint64_t> numberOf(const json& object, const char* name) {
  const auto found = object.find(name);
  if (found == object.end() || !found->is_number_unsigned()) return std::nullopt;
  return found->get<std::uint64_t>();
}

}  // namespace

std::string writeState(const PartState& state) {
  json object = {{"format", kStateFormat},
                 {"address", state.address},
                 {"place", state.place},
                 {"answered", state.answered},
                 {"etag", state.validator.etag},
                 {"lastModified", state.validator.lastModified},
                 {"dateIsStrong", state.validator.dateIsStrong},
                 {"durable", state.durable},
                 {"boot", state.boot}};
  if (state.total) object["total"] = *state.total;
  return object.dump(kIndent, ' ', false, json::error_handler_t::replace) + "\n";
}

std::optional<PartState> readState(std::string_view text) {
  const json object = json::parse(text, nullptr, false);
  if (!object.is_object() || numberOf(object, "format") != kStateFormat) return std::nullopt;
  PartState state;
  state.address = textOf(object, "address");
  state.place = textOf(object, "place");
  if (state.address.empty() || state.place.empty()) return std::nullopt;
  state.answered = flagOf(object, "answered");
  state.total = numberOf(object, "total");
  state.validator = {textOf(object, "etag"), textOf(object, "lastModified"),
                     flagOf(object, "dateIsStrong")};
  state.durable = numberOf(object, "durable").value_or(0);
  state.boot = textOf(object, "boot");
  return state;
}

std::optional<PartState> loadState(const std::filesystem::path& file) {
  const std::string text = readSmallFile(file);
  return text.empty() ? std::nullopt : readState(text);
}

int storeState(const std::filesystem::path& file, const PartState& state) {
  return replaceSmallFile(file, writeState(state));
}

}  // namespace playerx::transfers
