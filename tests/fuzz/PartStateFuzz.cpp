// Input: the file that says what a partial film is.
#include "playerx/transfers/PartState.h"
#include "tests/fuzz/Fuzz.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using playerx::transfers::readState;
  const auto state = readState(fuzz::textOf(data, size));
  if (!state) return 0;
  fuzz::require(!state->address.empty() && !state->place.empty(), "it is known whose it is");
  fuzz::require(readState(writeState(*state)) == state, "a state keeps");
  return 0;
}
