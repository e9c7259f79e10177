#include "playerx/app/door/RequestFault.h"

#include <nlohmann/json.hpp>

#include "playerx/app/door/RequestWords.h"
#include "playerx/app/inputs/InputText.h"
#include "playerx/app/inputs/OptionFault.h"
#include "playerx/app/session/FilmOptionsJson.h"

namespace playerx::door {

using Members = model::JsonMembers;
using session::Request;

namespace {

using Json = nlohmann::ordered_json;

bool isDirection(const Json& word) { return Json(word.get<Request::Direction>()) == word; }

/// What is wrong with the way that an item is to move; empty when nothing is.
std::string faultOfMove(const Members& members) {
  const bool isMove = members.has("action") && members.at("action") == "move";
  if (!isMove || (members.has("direction") && isDirection(members.at("direction")))) return {};
  return "The request names no direction; give up, down, top, bottom or before.";
}

/// What the request lacks; empty when nothing.
std::string lackOf(const Request& request) {
  using Action = Request::Action;
  const bool isMove = request.action == Action::kMove;
  const bool needsItem = isMove || request.action == Action::kRemove;
  if (needsItem && !request.id && request.position == 0) {
    return "The request names no item; give its id, or its position from 1 on.";
  }
  if (request.action == Action::kLimit && !request.rateLimit) {
    return "The request names no limit; give its rateLimit, 0 for none.";
  }
  if (isMove && request.direction == Request::Direction::kBefore && request.before == 0) {
    return "The request does not name the item to move in front of; give its id as \"before\".";
  }
  return {};
}

/// What is wrong with the films that the request is to add; empty when nothing is.
std::string faultOfFilms(const Request& request) {
  if (request.action != Request::Action::kAdd) return {};
  const bool isOneAddress =
      request.inputs.size() == 1 && !inputs::isTicketPath(request.inputs.front());
  return inputs::faultOfSharing(isOneAddress, request.name, request.options);
}

/// The first option that cannot be read; empty when all can, or when these are no options at all.
std::string faultOfOptions(const Json& options) {
  if (!options.is_object()) return {};
  for (const auto& [name, value] : options.items()) {
    if (!session::filmOptionsOf({{name, value}})) {
      return "The request has an impossible value for the option " + name + ".";
    }
  }
  return {};
}

}  // namespace

std::string faultOf(const Request& request, const Members& members) {
  std::string fault;
  if (members.has("options")) fault = faultOfOptions(members.at("options"));
  if (fault.empty()) fault = faultOfMove(members);
  if (!members.isGood() || !members.has("action")) return fault;
  if (fault.empty() && !request.name.empty()) fault = inputs::faultOfName(request.name);
  if (fault.empty()) fault = lackOf(request);
  return fault.empty() ? faultOfFilms(request) : fault;
}

}  // namespace playerx::door
