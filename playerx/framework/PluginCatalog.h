#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "playerx/framework/PluginDescription.h"

namespace playerx {

/// What was found in the folders of plug-ins: the usable descriptions, in the order of the folders
/// and within one of the file names, and a sentence for each that is not usable. A record without
/// ties to the files it was read from.
struct PluginCatalog {
  std::vector<PluginDescription> descriptions;
  std::vector<std::string> problems;
};

/// Reads every file named "*.json" in `folders`. A folder that is not there holds no plug-ins. The
/// first description of an id counts, so that an earlier folder overrides a later one. Loads
/// nothing.
PluginCatalog readPluginCatalog(const std::vector<std::filesystem::path>& folders);

}  // namespace playerx
