#pragma once

#include <string_view>

namespace persistence {

/// Whether the XML library reads these bytes in a bearable time.
///
/// It compares the attributes of an element each with each, so one of a hundred thousand would keep
/// it busy for minutes. Counted is what could be an attribute to the library, also in comments and
/// in character data: where a malformed one of these ends for it is not for this check to guess.
bool isHarmlessXml(std::string_view bytes);

}  // namespace persistence
