#pragma once

#include <istream>
#include <string>
#include <vector>

namespace playerx::cli {

/// The inputs that a list names, one a line: a byte-order mark before the list and blanks at both
/// ends of a line are dropped, and so are empty lines and those that begin with "#".
std::vector<std::string> readInputList(std::istream& list);

/// Adds the inputs that a file names, or standard input for "-". Returns why it cannot be read, in
/// one sentence, and empty otherwise.
std::string readInputFile(const std::string& path, std::vector<std::string>& inputs);

}  // namespace playerx::cli
