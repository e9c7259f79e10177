#include "playerx/framework/PluginContext.h"

#include <exception>
#include <utility>

#include "KPIM/Plugin.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "VeskPlayerX/ShutdownInterface.h"
#include "playerx/framework/PluginCatalog.h"
#include "playerx/framework/PluginRanking.h"
#include "playerx/framework/PluginShelf.h"

namespace playerx {

struct PluginContext::Impl {
  explicit Impl(KPIM::Context* context) : shelf(context) {}

  // Tries the qualifying ones among `entries`, best first. Returns 0 for the first that could be
  // held, else 2 when at least one qualifies but could not be loaded, else 1.
  KPIM::VESK_RESULT holdBest(const std::vector<ShelfEntry*>& entries, const PluginFilter& filter,
                             const PluginInfoSelector& selector, bool mayLoad, KPIM::Plugin** out) {
    std::vector<const KPIM::PluginInfo*> infos;
    for (const ShelfEntry* entry : entries) infos.push_back(&entry->info);
    KPIM::VESK_RESULT outcome = KPIM::kNoSuchPlugin;
    for (const std::size_t at : bestFirst(infos, filter, selector)) {
      const KPIM::VESK_RESULT result = shelf.hold(*entries[at], mayLoad, out);
      if (result == KPIM::kSuccess) return result;
      if (result == KPIM::kLoadFailed) outcome = result;
    }
    return outcome;
  }

  PluginShelf shelf;
};

namespace {

void callShutdown(KPIM::Plugin& plugin) {
  void* face = nullptr;
  if (plugin.kpimGetInterface(VeskPlayerX::DIN_Shutdown, &face) != KPIM::kSuccess) return;
  static_cast<VeskPlayerX::ShutdownInterface*>(face)->Shutdown();
}

void endWork(PluginShelf& shelf, ShelfEntry& entry) {
  KPIM::Plugin* plugin = nullptr;
  if (shelf.hold(entry, false, &plugin) != KPIM::kSuccess) return;
  const std::string problem = "Plug-in " + entry.info.id + ": Its Shutdown failed";
  try {
    callShutdown(*plugin);
  } catch (const std::exception& failure) {
    shelf.addProblem(problem + ": " + failure.what() + ".");
  } catch (...) {
    shelf.addProblem(problem + ".");
  }
  plugin->kpimRelease();
}

}  // namespace

PluginContext::PluginContext(const std::vector<std::filesystem::path>& folders)
    : impl_(std::make_unique<Impl>(this)) {
  PluginCatalog catalog = readPluginCatalog(folders);
  for (PluginDescription& description : catalog.descriptions) {
    impl_->shelf.add(std::move(description.info), std::move(description.library), nullptr);
  }
  for (const std::string& problem : catalog.problems) impl_->shelf.addProblem(problem);
}

PluginContext::~PluginContext() { shutdown(); }

void PluginContext::add(KPIM::PluginInfo info, PluginFactory factory) {
  impl_->shelf.add(std::move(info), {}, std::move(factory));
}

KPIM::VESK_RESULT PluginContext::getPluginInstance(const PluginFilter& filter,
                                                   const PluginInfoSelector& selector, bool mayLoad,
                                                   KPIM::Plugin** out) {
  PluginShelf& shelf = impl_->shelf;
  const KPIM::VESK_RESULT found = impl_->holdBest(shelf.loaded(), filter, selector, false, out);
  if (found == KPIM::kSuccess || !mayLoad) return found;
  return impl_->holdBest(shelf.all(), filter, selector, true, out);
}

const KPIM::PluginInfo* PluginContext::infoOf(const KPIM::Plugin& plugin) const {
  return impl_->shelf.infoOf(plugin);
}

int PluginContext::unloadUnused() {
  int unloaded = 0;
  for (bool more = true; more;) {
    more = false;
    for (ShelfEntry* entry : impl_->shelf.loaded()) {
      if (!impl_->shelf.unloadIfUnused(*entry)) continue;
      ++unloaded;
      more = true;
    }
  }
  return unloaded;
}

void PluginContext::shutdown() {
  PluginShelf& shelf = impl_->shelf;
  shelf.close();
  const std::vector<ShelfEntry*> entries = shelf.loaded();
  for (ShelfEntry* entry : entries) endWork(shelf, *entry);
  for (ShelfEntry* entry : entries) shelf.unload(*entry);
}

std::vector<std::string> PluginContext::problems() const { return impl_->shelf.problems(); }

}  // namespace playerx
