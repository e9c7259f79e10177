#pragma once

#include <string>

namespace power_test {

/// Version `number` (1 and up) of a file that grows, shrinks and changes like a queue file. Like
/// one, most versions differ from the one before in a few bytes, and three of four in those of one
/// place alone.
std::string contentOfVersion(unsigned long number);

/// The number of the version that this is; 0 when it is not exactly one.
unsigned long versionOfContent(const std::string& content);

}  // namespace power_test
