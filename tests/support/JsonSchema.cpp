#include "tests/support/JsonSchema.h"

#include <algorithm>
#include <functional>
#include <map>
#include <stdexcept>

#include "tests/support/TempDir.h"

namespace support {

using Json = nlohmann::json;

namespace {

bool hasType(const Json& value, const std::string& type) {
  if (type == "integer") return value.is_number_integer();
  return type == value.type_name();
}

bool hasOneOf(const Json& value, const Json& types) {
  if (types.is_string()) return hasType(value, types);
  return std::any_of(types.begin(), types.end(),
                     [&value](const Json& type) { return hasType(value, type); });
}

std::string fault(bool isBroken, const Json& value, const std::string& rule, const Json& wanted) {
  if (!isBroken) return "";
  const auto replace = Json::error_handler_t::replace;
  return value.dump(-1, ' ', false, replace) + " breaks " + rule + " " + wanted.dump() + "\n";
}

bool lacksSome(const Json& object, const Json& names) {
  return !std::all_of(names.begin(), names.end(),
                      [&object](const Json& name) { return object.contains(name); });
}

std::string faultsOfMembers(const Json& object, const Json& schemas) {
  std::string faults;
  for (const auto& [name, schema] : schemas.items()) {
    if (object.contains(name)) faults += faultsOf(object[name], schema);
  }
  return faults;
}

bool hasOthers(const Json& object, const Json& schema) {
  const auto members = object.items();
  return std::any_of(members.begin(), members.end(), [&schema](const auto& member) {
    return !schema["properties"].contains(member.key());
  });
}

std::ptrdiff_t fittingOf(const Json& value, const Json& schemas) {
  return std::count_if(schemas.begin(), schemas.end(),
                       [&value](const Json& schema) { return faultsOf(value, schema).empty(); });
}

std::string faultsOfRule(const Json& value, const std::string& rule, const Json& wanted,
                         const Json& schema) {
  if (rule == "$schema" || rule == "title") return "";
  if (rule == "type") return fault(!hasOneOf(value, wanted), value, rule, wanted);
  if (rule == "const") return fault(value != wanted, value, rule, wanted);
  if (rule == "enum") {
    return fault(std::find(wanted.begin(), wanted.end(), value) == wanted.end(), value, rule,
                 wanted);
  }
  if (rule == "minimum") return fault(value.is_number() && value < wanted, value, rule, wanted);
  if (rule == "maximum") return fault(value.is_number() && value > wanted, value, rule, wanted);
  if (rule == "minLength") {
    return fault(value.is_string() && value.get<std::string>().size() < wanted, value, rule,
                 wanted);
  }
  if (rule == "required") return fault(lacksSome(value, wanted), value, rule, wanted);
  if (rule == "properties") return faultsOfMembers(value, wanted);
  if (rule == "additionalProperties") {
    return fault(!wanted.get<bool>() && hasOthers(value, schema), value, rule, wanted);
  }
  if (rule == "oneOf") return fault(fittingOf(value, wanted) != 1, value, rule, "one");
  throw std::logic_error("This rule is not known: " + rule);
}

}  // namespace

std::string faultsOf(const Json& value, const Json& schema) {
  std::string faults;
  for (const auto& [rule, wanted] : schema.items()) {
    faults += faultsOfRule(value, rule, wanted, schema);
  }
  return faults;
}

const Json& schemaOfLines() {
  static const Json schema = Json::parse(readFile(SCHEMA_OF_LINES));
  return schema;
}

}  // namespace support
