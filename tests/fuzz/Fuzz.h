#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// What libFuzzer, or the replay of a corpus, calls with each input. Every target defines it and
/// returns 0. The bytes end where `size` says, not with a zero byte.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

/// Ends the program, with the text, when what always holds does not: the fuzzer keeps the input.
void require(bool holds, const char* text);

/// The input as text.
std::string textOf(const std::uint8_t* data, std::size_t size);

/// Cuts an input into fields at the unit separator (byte 0x1f), so that a seed with several
/// arguments can be read and written with an editor.
class Fields {
 public:
  Fields(const std::uint8_t* data, std::size_t size);

  /// The next field, empty if absent left.
  std::string next();

  /// All that is left, separators included.
  std::string rest();

 private:
  std::string_view left_;
};

}  // namespace fuzz
