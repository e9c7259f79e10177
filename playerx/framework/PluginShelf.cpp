#include "playerx/framework/PluginShelf.h"

#include <algorithm>
#include <utility>

namespace playerx {
namespace {

const std::thread::id kNobody;

}  // namespace

void PluginShelf::add(KPIM::PluginInfo info, std::filesystem::path library, PluginFactory factory) {
  auto entry = std::unique_ptr<ShelfEntry>(
      new ShelfEntry{std::move(info), std::move(library), std::move(factory)});
  const std::lock_guard lock(mutex_);
  entries_.push_back(std::move(entry));
}

std::vector<ShelfEntry*> PluginShelf::all() const {
  const std::lock_guard lock(mutex_);
  std::vector<ShelfEntry*> result;
  for (const auto& entry : entries_) result.push_back(entry.get());
  return result;
}

std::vector<ShelfEntry*> PluginShelf::loaded() const {
  const std::lock_guard lock(mutex_);
  std::vector<ShelfEntry*> result;
  for (const auto& entry : entries_) {
    if (entry->plugin != nullptr) result.push_back(entry.get());
  }
  std::sort(result.begin(), result.end(), [](const ShelfEntry* left, const ShelfEntry* right) {
    return left->loadNumber < right->loadNumber;
  });
  return result;
}

KPIM::VESK_RESULT PluginShelf::hold(ShelfEntry& entry, bool mayLoad, KPIM::Plugin** out) {
  Lock lock(mutex_);
  if (!waitUntilFree(entry, lock)) return KPIM::kLoadFailed;
  if (entry.plugin == nullptr) {
    if (!mayLoad || closed_) return KPIM::kNoSuchPlugin;
    if (!load(entry, lock)) return KPIM::kLoadFailed;
  }
  lend(entry, lock, out);
  return KPIM::kSuccess;
}

bool PluginShelf::waitUntilFree(ShelfEntry& entry, Lock& lock) {
  const std::thread::id self = std::this_thread::get_id();
  while (entry.owner != kNobody) {
    if (closesCircle(entry)) return false;
    waits_[self] = &entry;
    changed_.wait(lock);
    waits_.erase(self);
  }
  return true;
}

// Follows who waits for whom, from the entry on: at the calling thread the circle would close.
bool PluginShelf::closesCircle(const ShelfEntry& entry) const {
  const ShelfEntry* wanted = &entry;
  while (wanted->owner != kNobody) {
    if (wanted->owner == std::this_thread::get_id()) return true;
    const auto next = waits_.find(wanted->owner);
    if (next == waits_.end()) return false;
    wanted = next->second;
  }
  return false;
}

bool PluginShelf::load(ShelfEntry& entry, Lock& lock) {
  entry.owner = std::this_thread::get_id();
  entry.loadNumber = ++loads_;
  lock.unlock();
  CreatedPlugin created =
      entry.factory ? createPlugin(entry.factory, context_) : createPlugin(entry.library, context_);
  lock.lock();
  entry.owner = kNobody;
  entry.plugin = created.plugin;
  entry.handle = std::move(created.library);
  changed_.notify_all();
  if (created.plugin != nullptr) return true;
  addProblemLocked("Plug-in " + entry.info.id + ": " + created.problem);
  return false;
}

void PluginShelf::lend(ShelfEntry& entry, Lock& lock, KPIM::Plugin** out) {
  KPIM::Plugin* plugin = entry.plugin;
  ++entry.borrowers;
  lock.unlock();
  plugin->kpimRetain();
  lock.lock();
  --entry.borrowers;
  changed_.notify_all();
  *out = plugin;
}

bool PluginShelf::unloadIfUnused(ShelfEntry& entry) {
  Lock lock(mutex_);
  if (entry.plugin == nullptr || entry.owner != kNobody || entry.borrowers > 0) return false;
  entry.owner = std::this_thread::get_id();
  lock.unlock();
  const bool unused = entry.plugin->kpimHoldCount() == 1;
  lock.lock();
  if (unused) release(entry, lock);
  entry.owner = kNobody;
  changed_.notify_all();
  return unused;
}

void PluginShelf::unload(ShelfEntry& entry) {
  Lock lock(mutex_);
  changed_.wait(lock, [&entry] { return entry.owner == kNobody && entry.borrowers == 0; });
  if (entry.plugin == nullptr) return;
  entry.owner = std::this_thread::get_id();
  release(entry, lock);
  entry.owner = kNobody;
  changed_.notify_all();
}

// Called by the entry's owner. The entry keeps its plug-in while that is destroyed, so that a
// destructor may still ask for its description.
void PluginShelf::release(ShelfEntry& entry, Lock& lock) {
  lock.unlock();
  const int holds = entry.plugin->kpimRelease();
  LibraryHandle handle = std::move(entry.handle);
  if (holds > 0) {
    // Its holders still run its code: the library stays until the process ends.
    static_cast<void>(handle.release());
  } else {
    handle.reset();
  }
  lock.lock();
  entry.plugin = nullptr;
  if (holds > 0) addProblemLocked("Plug-in " + entry.info.id + ": It is still held.");
}

void PluginShelf::close() {
  Lock lock(mutex_);
  closed_ = true;
  changed_.wait(lock, [this] {
    return std::all_of(entries_.begin(), entries_.end(),
                       [](const auto& entry) { return entry->owner == kNobody; });
  });
}

const KPIM::PluginInfo* PluginShelf::infoOf(const KPIM::Plugin& plugin) const {
  const std::lock_guard lock(mutex_);
  for (const auto& entry : entries_) {
    if (entry->plugin == &plugin) return &entry->info;
  }
  return nullptr;
}

void PluginShelf::addProblem(const std::string& sentence) {
  const std::lock_guard lock(mutex_);
  addProblemLocked(sentence);
}

void PluginShelf::addProblemLocked(const std::string& sentence) {
  const bool known = std::find(problems_.begin(), problems_.end(), sentence) != problems_.end();
  if (!known) problems_.push_back(sentence);
}

std::vector<std::string> PluginShelf::problems() const {
  const std::lock_guard lock(mutex_);
  return problems_;
}

}  // namespace playerx
