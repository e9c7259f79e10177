#pragma once

#include <string>

#include "playerx/framework/PluginLibrary.h"

namespace playerx {

/// A new plug-in and what its code needs to stay in memory, or the reason why there is none.
struct CreatedPlugin {
  LibraryHandle library;           ///< none for a plug-in that is part of the program
  KPIM::Plugin* plugin = nullptr;  ///< with the hold of its creation; null on failure
  std::string problem;             ///< a sentence; empty on success
};

/// Has `factory` make a plug-in. What it throws ends here and counts as a failure.
CreatedPlugin createPlugin(const PluginFactory& factory, KPIM::Context* context);

/// Loads the library at `path` and has its `getPlugin` make a plug-in.
CreatedPlugin createPlugin(const std::filesystem::path& path, KPIM::Context* context);

}  // namespace playerx
