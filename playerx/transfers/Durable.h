#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace playerx::transfers {

/// Puts `content` in the place of the file, whole or not at all, readable for its owner alone.
/// Returns 0 or an error number (`errno` values); then the old file is as it was. Does not wait for
/// the disk: file systems that order their changes bring this one there before later ones.
int replaceContent(const std::filesystem::path& file, std::string_view content);

/// Reads a small file, up to a mebibyte of it; empty when it cannot be read.
std::string readSmallFile(const std::filesystem::path& file);

/// Names the machine's present run: another text after every start of the system. Empty when the
/// system does not tell.
const std::string& presentBoot();

}  // namespace playerx::transfers
