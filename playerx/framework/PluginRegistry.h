#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "KPIM/PluginInfo.h"
#include "playerx/framework/PluginCreation.h"
#include "playerx/platform/GuardMutex.h"

namespace playerx {

/// One plug-in that is known, loaded or not. The registry's lock guards all but the constants.
struct PluginEntry {
  const KPIM::PluginInfo info;
  const std::filesystem::path library;  ///< empty for a plug-in that is part of the program
  const PluginFactory factory;          ///< of a plug-in that is part of the program

  KPIM::Plugin* plugin = nullptr;  ///< with the context's own hold; null when not loaded
  LibraryHandle handle = nullptr;
  std::uint64_t loadNumber = 0;  ///< counts beginnings of loads
  int users = 0;                 ///< threads that call into `plugin` at this moment without a hold
  std::thread::id owner = {};    ///< the thread that loads or unloads it at this moment
};

/// The known plug-ins and their states: loads, hands out and unloads them one by one.
///
/// Entries are never removed, so pointers to them live as long as the registry. All operations may
/// be called from any thread. The lock is not held while a plug-in's code runs; meanwhile the entry
/// is marked with its owner, and other threads wait until the owner is done.
class PluginRegistry {
 public:
  explicit PluginRegistry(KPIM::Context* context) : context_(context) {}
  PluginRegistry(const PluginRegistry&) = delete;
  PluginRegistry& operator=(const PluginRegistry&) = delete;

  void add(KPIM::PluginInfo info, std::filesystem::path library, PluginFactory factory);

  /// Everything known; what is loaded, in the order in which loading began.
  std::vector<PluginEntry*> all() const;
  std::vector<PluginEntry*> loaded() const;

  /// The entry's plug-in with one more hold. Loads it first when that is allowed and necessary.
  KPIM::VESK_RESULT acquire(PluginEntry& entry, bool mayLoad, KPIM::Plugin** out);

  /// Gives the context's hold back; the library stays in memory when others hold the plug-in.
  void unload(PluginEntry& entry);

  /// Nothing is loaded from now on; returns when no other thread is loading.
  void close();

  const KPIM::PluginInfo* infoOf(const KPIM::Plugin& plugin) const;

  void addProblem(const std::string& sentence);
  std::vector<std::string> problems() const;

 private:
  bool waitUntilFree(PluginEntry& entry) KVPM_REQUIRES(mutex_);
  bool wouldDeadlock(const PluginEntry& entry) const KVPM_REQUIRES(mutex_);
  bool load(PluginEntry& entry) KVPM_REQUIRES(mutex_);
  void retain(PluginEntry& entry, KPIM::Plugin** out) KVPM_REQUIRES(mutex_);
  void release(PluginEntry& entry) KVPM_REQUIRES(mutex_);
  void setOwner(PluginEntry& entry, std::thread::id owner) KVPM_REQUIRES(mutex_);
  bool isAnyOwned() const KVPM_REQUIRES(mutex_);
  void note(const std::string& sentence) KVPM_REQUIRES(mutex_);

  KPIM::Context* const context_;

  mutable GuardMutex mutex_;
  Condition changed_;
  std::vector<std::unique_ptr<PluginEntry>> entries_ KVPM_GUARDED_BY(mutex_);
  std::map<std::thread::id, const PluginEntry*> waits_ KVPM_GUARDED_BY(mutex_);
  std::vector<std::string> problems_ KVPM_GUARDED_BY(mutex_);
  std::uint64_t loads_ KVPM_GUARDED_BY(mutex_) = 0;
  bool closed_ KVPM_GUARDED_BY(mutex_) = false;
};

}  // namespace playerx
