#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "KPIM/Helper.h"
#include "VeskPlayerX/DownloadManagerInterface.h"
#include "playerx/framework/PluginContext.h"
#include "playerx/framework/UserMessages.h"

namespace playerx {

struct Options;

/// Places and preferences of this run, as the options and the user's settings say. Takes effect for
/// the whole process.
struct Places {
  std::string data;   ///< absolute
  std::string media;  ///< absolute
};

/// Sets folders and preferences up. Needs the application's names to be set.
Places setUpPlaces(const Options& options);

/// The player around the module: its plug-ins, and the module while it is loaded. Used on the main
/// thread.
class PlayerHost {
 public:
  /// `messages` is offered to the plug-ins; not owned, outlives the host.
  PlayerHost(const Options& options, UserMessages& messages);
  PlayerHost(const PlayerHost&) = delete;
  PlayerHost& operator=(const PlayerHost&) = delete;

  /// Ends all plug-ins.
  ~PlayerHost();

  /// Loads the module. Returns a sentence when that fails, an empty text otherwise.
  std::string loadManager();

  /// The module's interface; after a successful `loadManager` only.
  VeskPlayerX::DownloadManagerInterface& manager() { return *manager_->get(); }

  PluginContext& context() { return context_; }

 private:
  PluginContext context_;
  std::unique_ptr<KPIM::Helper<VeskPlayerX::DownloadManagerInterface>> manager_;
};

}  // namespace playerx
