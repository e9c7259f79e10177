// Input: the file of the reasons why films failed.
#include "playerx/app/reasons/ReasonFile.h"
#include "tests/fuzz/Fuzz.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace playerx::reasons;
  const ReasonMap reasons = readReasons(fuzz::textOf(data, size));
  for (const auto& [item, reason] : reasons) {
    fuzz::require(!reason.code().empty(), "a program can tell");
    fuzz::require(!reason.sentence().empty(), "people can read it");
  }
  fuzz::require(readReasons(writeReasons(reasons)) == reasons, "reasons keep");
  return 0;
}
