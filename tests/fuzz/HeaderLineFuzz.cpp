// Input: a response's header block, as any lines, taken line by line as the client takes it.
#include <algorithm>
#include <memory>
#include <vector>

#include "kvsc/SSLConnect.h"
#include "tests/fuzz/Fuzz.h"

namespace {

/// Hands over a copy of exactly the line's size.
void parse(kvsc::SSLConnect& connection, const std::string& line) {
  std::vector<char> copy(line.begin(), line.end());
  connection.parseHeaderLine(copy.data(), static_cast<int>(copy.size()));
}

void parseAndCheck(kvsc::SSLConnect& connection, const std::string& line) {
  const int codeBefore = connection.getResponseCode();
  parse(connection, line);
  const std::size_t colon = line.find(':');
  const bool isStatus = line.find("HTTP") != std::string::npos;
  fuzz::require(isStatus || connection.getResponseCode() == codeBefore,
                "a status code comes from a status line alone");
  if (isStatus || colon == std::string::npos) return;
  const std::string value = connection.getResponseValue(line.substr(0, colon));
  fuzz::require(value.empty() || line.find(value, colon) != std::string::npos,
                "a value stands behind its colon");
  fuzz::require(value.find('\n') == std::string::npos, "a value ends with its line");
}

/// Making one takes longer than an input does; what one has taken note of must not grow for ever.
kvsc::SSLConnect& connectionForNextInput() {
  constexpr int kInputsEach = 500;
  static std::unique_ptr<kvsc::SSLConnect> connection;
  static int inputsLeft = 0;
  if (inputsLeft-- == 0) {
    connection = std::make_unique<kvsc::SSLConnect>("LOCALHOST");
    inputsLeft = kInputsEach;
  }
  return *connection;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kvsc::SSLConnect& connection = connectionForNextInput();
  const std::string block = fuzz::textOf(data, size);
  std::size_t start = 0;
  while (start < block.size()) {
    const std::size_t end = std::min(block.find('\n', start), block.size() - 1) + 1;
    parseAndCheck(connection, block.substr(start, end - start));
    start = end;
  }
  parseAndCheck(connection, block);
  return 0;
}
