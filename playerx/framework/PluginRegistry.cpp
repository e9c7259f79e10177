#include "playerx/framework/PluginRegistry.h"

#include <algorithm>
#include <utility>

namespace playerx {
namespace {

const std::thread::id kNoThread;

}  // namespace

void PluginRegistry::add(KPIM::PluginInfo info, std::filesystem::path library,
                         PluginFactory factory) {
  auto entry = std::unique_ptr<PluginEntry>(
      new PluginEntry{std::move(info), std::move(library), std::move(factory)});
  const GuardLock lock(mutex_);
  entries_.push_back(std::move(entry));
}

std::vector<PluginEntry*> PluginRegistry::all() const {
  const GuardLock lock(mutex_);
  std::vector<PluginEntry*> result;
  for (const auto& entry : entries_) result.push_back(entry.get());
  return result;
}

std::vector<PluginEntry*> PluginRegistry::loaded() const {
  const GuardLock lock(mutex_);
  std::vector<PluginEntry*> result;
  for (const auto& entry : entries_) {
    if (entry->plugin != nullptr) result.push_back(entry.get());
  }
  std::sort(result.begin(), result.end(), [](const PluginEntry* left, const PluginEntry* right) {
    return left->loadNumber < right->loadNumber;
  });
  return result;
}

KPIM::VESK_RESULT PluginRegistry::acquire(PluginEntry& entry, bool mayLoad, KPIM::Plugin** out) {
  const GuardLock lock(mutex_);
  if (!waitUntilFree(entry)) return KPIM::kLoadFailed;
  if (entry.plugin == nullptr) {
    if (!mayLoad || closed_) return KPIM::kNoSuchPlugin;
    if (!load(entry)) return KPIM::kLoadFailed;
  }
  retain(entry, out);
  return KPIM::kSuccess;
}

bool PluginRegistry::waitUntilFree(PluginEntry& entry) {
  const std::thread::id self = std::this_thread::get_id();
  while (entry.owner != kNoThread) {
    if (wouldDeadlock(entry)) return false;
    waits_[self] = &entry;
    changed_.wait(mutex_);
    waits_.erase(self);
  }
  return true;
}

// Follows the chain of waiting threads from the owner of `entry`: it must not lead back here.
bool PluginRegistry::wouldDeadlock(const PluginEntry& entry) const {
  const PluginEntry* wanted = &entry;
  while (wanted->owner != kNoThread) {
    if (wanted->owner == std::this_thread::get_id()) return true;
    const auto next = waits_.find(wanted->owner);
    if (next == waits_.end()) return false;
    wanted = next->second;
  }
  return false;
}

bool PluginRegistry::load(PluginEntry& entry) {
  setOwner(entry, std::this_thread::get_id());
  entry.loadNumber = ++loads_;
  mutex_.unlock();
  CreatedPlugin created = entry.library.empty() ? createPlugin(entry.factory, context_)
                                                : createPlugin(entry.library, context_);
  mutex_.lock();
  entry.plugin = created.plugin;
  entry.handle = std::move(created.library);
  setOwner(entry, kNoThread);
  if (created.plugin != nullptr) return true;
  note("Plug-in " + entry.info.id + ": " + created.problem);
  return false;
}

void PluginRegistry::retain(PluginEntry& entry, KPIM::Plugin** out) {
  KPIM::Plugin* plugin = entry.plugin;
  ++entry.users;
  mutex_.unlock();
  plugin->kpimRetain();
  mutex_.lock();
  --entry.users;
  changed_.notifyAll();
  *out = plugin;
}

void PluginRegistry::unload(PluginEntry& entry) {
  const GuardLock lock(mutex_);
  while (entry.owner != kNoThread || entry.users > 0) changed_.wait(mutex_);
  if (entry.plugin == nullptr) return;
  setOwner(entry, std::this_thread::get_id());
  release(entry);
  setOwner(entry, kNoThread);
}

// Called by the entry's owner. The entry keeps its plug-in while that is destroyed, so that a
// destructor may still ask for its description.
void PluginRegistry::release(PluginEntry& entry) {
  mutex_.unlock();
  const int holds = entry.plugin->kpimRelease();
  LibraryHandle handle = std::move(entry.handle);
  if (holds > 0) {
    // Its holders still run its code: the library stays until the process ends.
    static_cast<void>(handle.release());
  } else {
    handle.reset();
  }
  mutex_.lock();
  entry.plugin = nullptr;
  if (holds > 0) note("Plug-in " + entry.info.id + ": It is still held.");
}

void PluginRegistry::close() {
  const GuardLock lock(mutex_);
  closed_ = true;
  while (isAnyOwned()) changed_.wait(mutex_);
}

bool PluginRegistry::isAnyOwned() const {
  return std::any_of(entries_.begin(), entries_.end(),
                     [](const auto& entry) { return entry->owner != kNoThread; });
}

void PluginRegistry::setOwner(PluginEntry& entry, std::thread::id owner) {
  entry.owner = owner;
  changed_.notifyAll();
}

const KPIM::PluginInfo* PluginRegistry::infoOf(const KPIM::Plugin& plugin) const {
  const GuardLock lock(mutex_);
  for (const auto& entry : entries_) {
    if (entry->plugin == &plugin) return &entry->info;
  }
  return nullptr;
}

void PluginRegistry::addProblem(const std::string& sentence) {
  const GuardLock lock(mutex_);
  note(sentence);
}

void PluginRegistry::note(const std::string& sentence) {
  const bool known = std::find(problems_.begin(), problems_.end(), sentence) != problems_.end();
  if (!known) problems_.push_back(sentence);
}

std::vector<std::string> PluginRegistry::problems() const {
  const GuardLock lock(mutex_);
  return problems_;
}

}  // namespace playerx
