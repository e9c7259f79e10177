#include "playerx/cli/InputList.h"

#include <cerrno>
#include <fstream>
#include <iostream>
#include <string_view>
#include <system_error>
#include <utility>

#include "playerx/app/inputs/InputText.h"
#include "playerx/platform/Text.h"

namespace playerx::cli {

namespace {

/// U+FEFF in UTF-8, which some editors put before the text.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

std::vector<std::string> readInputList(std::istream& list) {
  std::vector<std::string> inputs;
  bool isFirst = true;
  for (std::string line; std::getline(list, line);) {
    const bool isMarked = std::exchange(isFirst, false) && line.starts_with(kByteOrderMark);
    if (isMarked) line.erase(0, kByteOrderMark.size());
    std::string input(trimmed(line));
    if (!input.empty() && input.front() != '#') inputs.push_back(std::move(input));
  }
  return inputs;
}

std::string readInputFile(const std::string& path, std::vector<std::string>& inputs) {
  std::ifstream file;
  if (path != "-") file.open(path);
  std::istream& list = path == "-" ? std::cin : file;
  errno = 0;
  for (std::string& input : list ? readInputList(list) : std::vector<std::string>{}) {
    inputs.push_back(std::move(input));
  }
  const bool isRead = list.eof() && !list.bad();
  if (isRead) return {};
  const int error = errno == 0 ? ENOENT : errno;
  return "The list " + inputs::displayPath(path) + " cannot be read (" +
         std::generic_category().message(error) + ").";
}

}  // namespace playerx::cli
