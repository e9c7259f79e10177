#pragma once

#include <string_view>

namespace persistence {

/// Whether the XML library can read these bytes in acceptable time.
///
/// The library compares every attribute of an element with every other, so an element of a hundred
/// thousand would keep it busy for minutes. Everything that could be an attribute is counted, even
/// in comments and character data: where the library sees the end of a malformed one is unknown
/// here.
bool isHarmlessXml(std::string_view bytes);

}  // namespace persistence
