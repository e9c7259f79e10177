#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "KPIM/Plugin.h"

namespace playerx {

/// Closes a library of the system's loader.
struct LibraryCloser {
  void operator()(void* library) const;
};

/// A library in memory.
using LibraryHandle = std::unique_ptr<void, LibraryCloser>;

/// Makes plug-ins; what `getPlugin` of a library does.
using PluginFactory = std::function<KPIM::GetPluginFunction>;

/// A new plug-in and what its code needs to stay in memory, or the reason why it could not be made.
struct CreatedPlugin {
  LibraryHandle library;           ///< null for a plug-in that is part of the program
  KPIM::Plugin* plugin = nullptr;  ///< with the hold of its creation; null on failure
  std::string problem;             ///< a sentence; empty on success
};

/// Has `factory` make a plug-in. What it throws ends here and counts as a failure.
CreatedPlugin createPlugin(const PluginFactory& factory, KPIM::Context* context);

/// Loads the library at `path`, with all its symbols bound and none of them offered to others, and
/// has its `getPlugin` make a plug-in. Runs the library's own start-up code.
CreatedPlugin createPlugin(const std::filesystem::path& path, KPIM::Context* context);

}  // namespace playerx
