#pragma once

#include <string>

#include "persistence/ItemList.h"

namespace persistence {

/// The films of a clear ticket's bytes, in their order: every block that is opened, closed, and
/// names an address. Empty for a ticket with the first line of another format.
ItemList readClearTicket(const std::basic_string<unsigned char>& bytes);

}  // namespace persistence
