// Input: the value of a Content-Range field, the same as a number.
#include "playerx/transfers/ContentRange.h"
#include "tests/fuzz/Fuzz.h"

namespace {

using playerx::transfers::ContentRange;

std::string written(const ContentRange& range) {
  const std::string bytes =
      range.bytes ? std::to_string(range.bytes->first) + "-" + std::to_string(range.bytes->last)
                  : "*";
  return "bytes " + bytes + "/" + (range.total ? std::to_string(*range.total) : "*");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = fuzz::textOf(data, size);
  if (const auto range = playerx::transfers::parseContentRange(text)) {
    fuzz::require(range->bytes || range->total, "something is said");
    if (range->bytes) {
      fuzz::require(range->bytes->first <= range->bytes->last, "a range does not run backwards");
      fuzz::require(!range->total || range->bytes->last < *range->total, "it ends in the file");
    }
    fuzz::require(playerx::transfers::parseContentRange(written(*range)) == range, "it keeps");
  }
  if (const auto number = playerx::transfers::parseNumber(text)) {
    fuzz::require(text.find_first_not_of("0123456789") == std::string::npos, "digits alone");
    fuzz::require(text.ends_with(std::to_string(*number)), "zeros may come first");
  }
  return 0;
}
