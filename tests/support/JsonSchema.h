#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace support {

/// What breaks a rule of `schema` in `value`, one fault per line; empty when nothing does. Knows
/// type, const, enum, minimum, maximum, minLength, required, properties, additionalProperties and
/// oneOf; throws std::logic_error at any other rule.
std::string faultsOf(const nlohmann::json& value, const nlohmann::json& schema);

/// The schema of the lines that the command line prints with --json.
const nlohmann::json& schemaOfLines();

}  // namespace support
