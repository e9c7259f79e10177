#pragma once

#include <string>

namespace playerx::cli {

/// Asks for a slot number on the terminal. Without a terminal on standard input and standard error
/// the question is declined. Returns the number, below 0 when declined. Blocks for the user.
int askForSlot(const std::string& title);

}  // namespace playerx::cli
