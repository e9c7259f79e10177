#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <variant>

#include "KPIM/PluginInfo.h"

namespace playerx {

/// A plug-in that can be loaded: what is known of it, and the library that holds it.
struct PluginDescription {
  KPIM::PluginInfo info;
  std::filesystem::path library;
};

/// Why a description is of no use, in one sentence without the file's name.
struct DescriptionProblem {
  std::string text;
};

/// Reads the JSON text of a description that lies in `folder`:
/// `{"id": "...", "version": "1.0", "interfaces": ["...", ...], "library": "libX.so"}`. Every
/// member is required; a library without a leading "/" is looked for in `folder`. Members of other
/// names are left to others.
std::variant<PluginDescription, DescriptionProblem> parseDescription(
    std::string_view json, const std::filesystem::path& folder);

}  // namespace playerx
