#include "playerx/framework/PluginCreation.h"

#include <exception>
#include <utility>

namespace playerx {

CreatedPlugin createPlugin(const PluginFactory& factory, KPIM::Context* context) {
  CreatedPlugin created;
  try {
    void* made = nullptr;
    const KPIM::VESK_RESULT result = factory(context, &made);
    if (result == KPIM::kSuccess && made != nullptr) {
      created.plugin = static_cast<KPIM::Plugin*>(made);
    } else {
      created.problem = "Its getPlugin made no plug-in (result " + std::to_string(result) + ").";
    }
  } catch (const std::exception& failure) {
    created.problem = std::string("Its getPlugin failed: ") + failure.what() + ".";
  } catch (...) {
    created.problem = "Its getPlugin failed.";
  }
  return created;
}

CreatedPlugin createPlugin(const std::filesystem::path& path, KPIM::Context* context) {
  PluginLibrary library = openPluginLibrary(path);
  CreatedPlugin created;
  if (!library.problem.empty()) {
    created.problem = "It cannot be loaded: " + library.problem + ".";
    return created;
  }
  created = createPlugin(PluginFactory(library.factory), context);
  if (created.plugin != nullptr) created.library = std::move(library.handle);
  return created;
}

}  // namespace playerx
