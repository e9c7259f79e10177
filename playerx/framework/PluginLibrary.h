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

/// A loaded library and its creation function, or the reason why there is none.
struct PluginLibrary {
  LibraryHandle handle;
  KPIM::GetPluginFunction* factory = nullptr;
  std::string problem;  ///< the loader's words; empty on success
};

/// Loads the library at `path` with all its symbols bound and none of them offered to others. Runs
/// the library's own start-up code.
PluginLibrary openPluginLibrary(const std::filesystem::path& path);

}  // namespace playerx
