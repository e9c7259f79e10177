#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace playerx {

/// The path as the system takes it, UTF-8; nullopt for a text with a NUL, which no path can hold.
std::optional<std::filesystem::path> nativePath(const std::wstring& path);

/// Where a write to `path` ends up: symbolic links in its last component are followed, dangling
/// ones too. Stores ELOOP when they form a circle.
std::filesystem::path followLinks(std::filesystem::path path, int& error);

/// Makes the folder and those above it that are missing; each new one is the user's alone. Returns
/// 0 or an error number (`errno` values).
int makePrivateFolders(const std::filesystem::path& folder);

/// `path`, or the nearest folder above it, whichever exists.
std::filesystem::path nearestExisting(std::filesystem::path path);

}  // namespace playerx
