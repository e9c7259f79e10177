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

/// One plug-in that is known, loaded or not. The shelf's lock guards all but the constants.
struct ShelfEntry {
  const KPIM::PluginInfo info;
  const std::filesystem::path library;  ///< empty for a plug-in that is part of the program
  const PluginFactory factory;          ///< of a plug-in that is part of the program

  KPIM::Plugin* plugin = nullptr;  ///< with the context's own hold; null when not loaded
  LibraryHandle handle = nullptr;
  std::uint64_t loadNumber = 0;  ///< counts beginnings of loads
  int borrowers = 0;             ///< threads that use `plugin` at this moment without a hold
  std::thread::id owner = {};    ///< the thread that loads or unloads it at this moment
};

/// The known plug-ins and their states: loads, lends and unloads them one by one.
///
/// Entries are never removed, so pointers to them live as long as the shelf. All operations may be
/// called from any thread. The lock is not held while a plug-in's code runs; instead the entry is
/// marked with its owner, and others wait until the owner is done.
class PluginShelf {
 public:
  explicit PluginShelf(KPIM::Context* context) : context_(context) {}
  PluginShelf(const PluginShelf&) = delete;
  PluginShelf& operator=(const PluginShelf&) = delete;

  void add(KPIM::PluginInfo info, std::filesystem::path library, PluginFactory factory);

  /// Everything known; what is loaded, in the order in which loading began.
  std::vector<ShelfEntry*> all() const;
  std::vector<ShelfEntry*> loaded() const;

  /// The entry's plug-in with one more hold. Loads it first when that is allowed and necessary.
  KPIM::VESK_RESULT hold(ShelfEntry& entry, bool mayLoad, KPIM::Plugin** out);

  /// Unloads the plug-in when the context's hold is the only one. Returns whether it did.
  bool unloadIfUnused(ShelfEntry& entry);

  /// Gives the context's hold back; the library stays in memory when others hold the plug-in.
  void unload(ShelfEntry& entry);

  /// Nothing is loaded from now on; returns when no other thread is loading.
  void close();

  const KPIM::PluginInfo* infoOf(const KPIM::Plugin& plugin) const;

  void addProblem(const std::string& sentence);
  std::vector<std::string> problems() const;

 private:
  bool waitUntilFree(ShelfEntry& entry) KVPM_REQUIRES(mutex_);
  bool closesCircle(const ShelfEntry& entry) const KVPM_REQUIRES(mutex_);
  bool load(ShelfEntry& entry) KVPM_REQUIRES(mutex_);
  void lend(ShelfEntry& entry, KPIM::Plugin** out) KVPM_REQUIRES(mutex_);
  void release(ShelfEntry& entry) KVPM_REQUIRES(mutex_);
  void setOwner(ShelfEntry& entry, std::thread::id owner) KVPM_REQUIRES(mutex_);
  bool isAnyOwned() const KVPM_REQUIRES(mutex_);
  void note(const std::string& sentence) KVPM_REQUIRES(mutex_);

  KPIM::Context* const context_;

  mutable GuardMutex mutex_;
  Condition changed_;
  std::vector<std::unique_ptr<ShelfEntry>> entries_ KVPM_GUARDED_BY(mutex_);
  std::map<std::thread::id, const ShelfEntry*> waits_ KVPM_GUARDED_BY(mutex_);
  std::vector<std::string> problems_ KVPM_GUARDED_BY(mutex_);
  std::uint64_t loads_ KVPM_GUARDED_BY(mutex_) = 0;
  bool closed_ KVPM_GUARDED_BY(mutex_) = false;
};

}  // namespace playerx
