#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace playerx {

/// Files that the player keeps beside others, each read and replaced as a whole. What is not a file
/// (a pipe, a device, a folder) is neither read nor written, and nothing waits for it.

/// Puts `content` in the place of the file, whole or not at all, readable for its owner alone.
/// Returns 0 or an error number (`errno` values); then the old file is as it was. Does not wait for
/// the disk: file systems that order their changes bring this one there before later ones.
int replaceSmallFile(const std::filesystem::path& file, std::string_view content);

/// Writes `content` behind what the file holds; a new one is readable for its owner alone. Returns
/// 0 or an error number.
int appendToSmallFile(const std::filesystem::path& file, std::string_view content);

/// Reads the file, up to `most` bytes of it; empty when it cannot be read.
std::string readSmallFile(const std::filesystem::path& file,
                          std::size_t most = std::size_t{1} << 20U);

}  // namespace playerx
