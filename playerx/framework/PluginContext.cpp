#include "playerx/framework/PluginContext.h"

#include <exception>
#include <utility>

#include "KPIM/Plugin.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "VeskPlayerX/ShutdownInterface.h"
#include "playerx/framework/PluginCatalog.h"
#include "playerx/framework/PluginRanking.h"
#include "playerx/framework/PluginRegistry.h"

namespace playerx {

struct PluginContext::Impl {
  explicit Impl(KPIM::Context* context) : registry(context) {}

  // Tries the qualifying ones among `entries`, best first. Returns 0 for the first that could be
  // acquired, else 2 when at least one qualifies but could not be loaded, else 1.
  KPIM::VESK_RESULT acquireBest(const std::vector<PluginEntry*>& entries,
                                const PluginFilter& filter, const PluginInfoSelector& selector,
                                bool mayLoad, KPIM::Plugin** out) {
    std::vector<const KPIM::PluginInfo*> infos;
    for (const PluginEntry* entry : entries) infos.push_back(&entry->info);
    KPIM::VESK_RESULT outcome = KPIM::kNoSuchPlugin;
    for (const std::size_t at : bestFirst(infos, filter, selector)) {
      const KPIM::VESK_RESULT result = registry.acquire(*entries[at], mayLoad, out);
      if (result == KPIM::kSuccess) return result;
      if (result == KPIM::kLoadFailed) outcome = result;
    }
    return outcome;
  }

  KPIM::VESK_RESULT find(const PluginFilter& filter, const PluginInfoSelector& selector,
                         bool mayLoad, KPIM::Plugin** out) {
    const KPIM::VESK_RESULT found = acquireBest(registry.loaded(), filter, selector, false, out);
    if (found == KPIM::kSuccess || !mayLoad) return found;
    return acquireBest(registry.all(), filter, selector, true, out);
  }

  PluginRegistry registry;
};

namespace {

void callShutdown(KPIM::Plugin& plugin) {
  void* offered = nullptr;
  const auto result = plugin.kpimGetInterface(VeskPlayerX::DIN_Shutdown, &offered);
  if (result != KPIM::kSuccess || offered == nullptr) return;
  static_cast<VeskPlayerX::ShutdownInterface*>(offered)->Shutdown();
}

void endWork(PluginRegistry& registry, PluginEntry& entry) {
  KPIM::Plugin* plugin = nullptr;
  if (registry.acquire(entry, false, &plugin) != KPIM::kSuccess) return;
  const std::string problem = "Plug-in " + entry.info.id + ": Its Shutdown failed";
  try {
    callShutdown(*plugin);
  } catch (const std::exception& failure) {
    registry.addProblem(problem + ": " + failure.what() + ".");
  } catch (...) {
    registry.addProblem(problem + ".");
  }
  plugin->kpimRelease();
}

}  // namespace

PluginContext::PluginContext(const std::vector<std::filesystem::path>& folders)
    : impl_(std::make_unique<Impl>(this)) {
  PluginCatalog catalog = readPluginCatalog(folders);
  for (PluginDescription& description : catalog.descriptions) {
    impl_->registry.add(std::move(description.info), std::move(description.library), nullptr);
  }
  for (const std::string& problem : catalog.problems) impl_->registry.addProblem(problem);
}

PluginContext::~PluginContext() { shutdown(); }

void PluginContext::add(KPIM::PluginInfo info, PluginFactory factory) {
  impl_->registry.add(std::move(info), {}, std::move(factory));
}

KPIM::VESK_RESULT PluginContext::getPluginInstance(const PluginFilter& filter,
                                                   const PluginInfoSelector& selector, bool mayLoad,
                                                   KPIM::Plugin** out) {
  if (out == nullptr) return KPIM::kNoSuchPlugin;
  try {
    return impl_->find(filter, selector, mayLoad, out);
  } catch (...) {
    // The filter and the selector are code of plug-ins: what they throw must not meet another one.
    return KPIM::kNoSuchPlugin;
  }
}

const KPIM::PluginInfo* PluginContext::infoOf(const KPIM::Plugin& plugin) const {
  return impl_->registry.infoOf(plugin);
}

void PluginContext::shutdown() {
  PluginRegistry& registry = impl_->registry;
  registry.close();
  const std::vector<PluginEntry*> entries = registry.loaded();
  for (PluginEntry* entry : entries) endWork(registry, *entry);
  for (PluginEntry* entry : entries) registry.unload(*entry);
}

std::vector<std::string> PluginContext::problems() const { return impl_->registry.problems(); }

}  // namespace playerx
