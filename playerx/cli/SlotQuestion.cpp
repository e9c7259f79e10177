#include "playerx/cli/SlotQuestion.h"

#include <poll.h>
#include <unistd.h>

#include <charconv>
#include <iostream>

#include "playerx/cli/TerminalText.h"

namespace playerx::cli {

namespace {

constexpr int kDeclined = -1;

/// Clears the progress line that the terminal may show.
constexpr char kFreshLine[] = "\r\033[K";

}  // namespace

int askForSlot(const std::string& title) {
  if (isatty(STDIN_FILENO) == 0 || isatty(STDERR_FILENO) == 0) return kDeclined;
  std::cerr << kFreshLine << "All slots for \"" << printable(title)
            << "\" are taken. Slot to give up (a number; anything else declines): " << std::flush;
  std::string line;
  if (!std::getline(std::cin, line)) return kDeclined;
  int slot = kDeclined;
  const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), slot);
  const bool isNumber = error == std::errc() && end == line.data() + line.size() && slot >= 0;
  return isNumber ? slot : kDeclined;
}

}  // namespace playerx::cli
