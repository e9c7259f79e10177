#include "playerx/framework/PluginCreation.h"

#include <dlfcn.h>

#include <exception>
#include <utility>

namespace playerx {
namespace {

CreatedPlugin unloadable() {
  const char* const reason = ::dlerror();
  return {
      nullptr, nullptr,
      std::string("It cannot be loaded: ") + (reason == nullptr ? "unknown reason" : reason) + "."};
}

}  // namespace

void LibraryCloser::operator()(void* library) const { ::dlclose(library); }

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
  LibraryHandle library(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (!library) return unloadable();
  void* const symbol = ::dlsym(library.get(), "getPlugin");
  if (symbol == nullptr) return unloadable();
  const auto factory = reinterpret_cast<KPIM::GetPluginFunction*>(symbol);
  CreatedPlugin created = createPlugin(PluginFactory(factory), context);
  if (created.plugin != nullptr) created.library = std::move(library);
  return created;
}

}  // namespace playerx
