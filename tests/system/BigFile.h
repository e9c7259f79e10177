#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace system_test {

/// `size` bytes in which no two places look alike: every eight bytes tell where they stand.
std::string distinctBytes(std::size_t size, std::uint64_t seed = 0);

/// Writes such a file of any size, piece by piece.
void writeDistinctFile(const std::filesystem::path& path, std::uint64_t size,
                       std::uint64_t seed = 0);

/// Whether two files hold the same bytes; false when either cannot be read.
bool sameContent(const std::filesystem::path& left, const std::filesystem::path& right);

}  // namespace system_test
