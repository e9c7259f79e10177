#pragma once

#include <string_view>

namespace persistence {

/// Whether the XML library may be given these bytes.
///
/// A queue file has no document type, whose entities and default values could make a small file
/// huge in memory, and no element with more than a dozen attributes, which the library compares
/// each with each. Documents that have either are refused before they are parsed. So are those that
/// only seem to, in a comment or in character data: where a malformed one of these ends, for the
/// library, is not for this check to guess, and no queue file has any.
bool isHarmlessXml(std::string_view bytes);

}  // namespace persistence
