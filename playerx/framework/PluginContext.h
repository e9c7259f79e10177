#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "KPIM/Context.h"
#include "KPIM/PluginInfo.h"
#include "playerx/framework/PluginCreation.h"
#include "playerx/framework/PluginDirectory.h"

namespace playerx {

/// The player's plug-ins: finds them by their descriptions, loads each at most once, only when it
/// is wanted, and keeps it until `shutdown`. One that is held even then stays in memory.
///
/// Owned by the player; outlives every plug-in that it loaded. The operations of the base may be
/// called from any thread, also by plug-ins while they are made and destroyed; no lock is held
/// while code of a plug-in, a filter or a selector runs. Descriptions and libraries that are of no
/// use are skipped and named by `problems`.
class PluginContext final : public KPIM::Context, public PluginDirectory {
 public:
  /// Reads the descriptions in `folders` (see `readPluginCatalog`); loads nothing.
  explicit PluginContext(const std::vector<std::filesystem::path>& folders);
  PluginContext(const PluginContext&) = delete;
  PluginContext& operator=(const PluginContext&) = delete;

  /// Shuts down first, if that was not done.
  ~PluginContext() override;

  /// Offers a plug-in that is part of the program; `factory` makes it when it is first wanted. Ids
  /// are not compared with those of the descriptions.
  void add(KPIM::PluginInfo info, PluginFactory factory);

  /// As declared by the base. When the best choice cannot be loaded, the next best is tried, and a
  /// later call begins with the best again. A thread waits for a plug-in that another thread is
  /// loading; where threads would wait for each other in a circle, it cannot be loaded (2). After
  /// `shutdown` nothing is loaded any more. Without `out`, or when the filter or the selector
  /// throws, the answer is 1; a selector that contradicts itself gets one of the qualifying ones.
  KPIM::VESK_RESULT getPluginInstance(const PluginFilter& filter,
                                      const PluginInfoSelector& selector, bool mayLoad,
                                      KPIM::Plugin** out) override;

  const KPIM::PluginInfo* infoOf(const KPIM::Plugin& plugin) const override;

  /// Ends all plug-ins: calls `Shutdown` on those that offer `DIN_Shutdown`, one that was loaded
  /// earlier before those that it had loaded, then gives back the holds in the same order and
  /// unloads what is no longer held. Called on the host's thread, not by plug-ins; a second call
  /// does nothing.
  void shutdown();

  /// One sentence for everything that was skipped so far.
  std::vector<std::string> problems() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace playerx
