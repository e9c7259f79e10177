#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace playerx::transfers {

/// Puts `content` in the place of the file, whole or not at all, readable for its owner alone.
/// Returns 0 or an error number (`errno` values); then the old file is as it was. Does not wait for
/// the disk: file systems that order their changes bring this one there before later ones.
int replaceSmallFile(const std::filesystem::path& file, std::string_view content);

/// Reads a small file, up to a mebibyte of it; empty when it cannot be read.
std::string readSmallFile(const std::filesystem::path& file);

}  // namespace playerx::transfers
