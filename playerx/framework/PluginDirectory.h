#pragma once

namespace KPIM {
class Plugin;
struct PluginInfo;
}  // namespace KPIM

namespace playerx {

/// What a context knows of the plug-ins that it loaded; a plug-in asks its context for it.
class PluginDirectory {
 public:
  PluginDirectory() = default;
  PluginDirectory(const PluginDirectory&) = delete;
  PluginDirectory& operator=(const PluginDirectory&) = delete;
  virtual ~PluginDirectory() = default;

  /// The description by which `plugin` was loaded, owned by the directory and unchanged while that
  /// lives; null for a plug-in that it has not loaded. May be called from any thread.
  virtual const KPIM::PluginInfo* infoOf(const KPIM::Plugin& plugin) const = 0;
};

}  // namespace playerx
