#include "playerx/framework/PluginLibrary.h"

#include <dlfcn.h>

namespace playerx {
namespace {

std::string loaderError() {
  const char* text = ::dlerror();
  return text == nullptr ? "unknown reason" : text;
}

}  // namespace

void LibraryCloser::operator()(void* library) const { ::dlclose(library); }

PluginLibrary openPluginLibrary(const std::filesystem::path& path) {
  PluginLibrary library;
  library.handle.reset(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (!library.handle) {
    library.problem = loaderError();
    return library;
  }
  void* symbol = ::dlsym(library.handle.get(), "getPlugin");
  if (symbol == nullptr) library.problem = loaderError();
  library.factory = reinterpret_cast<KPIM::GetPluginFunction*>(symbol);
  return library;
}

}  // namespace playerx
