#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace playerx {

/// The path as the system takes it, UTF-8; none for a text that no path can be because a NUL is in
/// it.
std::optional<std::filesystem::path> nativePath(const std::wstring& path);

/// Where a write to `path` ends up: links in its last part are followed, whether or not something
/// is at their end. Stores an error number other than 0 when they run in a circle.
std::filesystem::path followLinks(std::filesystem::path path, int& error);

}  // namespace playerx
