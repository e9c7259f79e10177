#pragma once

#include <memory>
#include <string>
#include <utility>

#include "KPIM/Context.h"
#include "KPIM/Plugin.h"

namespace KPIM {

/// Finds a plug-in by the interface `I` and holds it until destroyed. Used by one thread at a time;
/// the interface it yields follows its own rules.
template <class I>
class Helper {
 public:
  /// Looks nothing up yet.
  explicit Helper(std::string interfaceId) : interfaceId_(std::move(interfaceId)) {}
  Helper(const Helper&) = delete;
  Helper& operator=(const Helper&) = delete;
  ~Helper() { release(); }

  /// Has `context` choose, and load when `mayLoad` is true, a plug-in, and asks it for the
  /// interface. Returns 0 when `get` is ready, otherwise the first result other than 0, 1 for a
  /// plug-in that is null, or 3 for one that hands out null; then `get` is null. A null `context`
  /// has no plug-ins. A plug-in found earlier is released first.
  VESK_RESULT loadPlugin(Context* context, const Context::PluginFilter& filter,
                         const Context::PluginInfoSelector& selector, bool mayLoad) {
    release();
    if (context == nullptr) return kNoSuchPlugin;
    const VESK_RESULT found = context->getPluginInstance(filter, selector, mayLoad, &plugin_);
    if (found != kSuccess) return found;
    if (plugin_ == nullptr) return kNoSuchPlugin;
    void* face = nullptr;
    const VESK_RESULT offered = plugin_->kpimGetInterface(interfaceId_, &face);
    if (offered != kSuccess || face == nullptr) {
      release();
      return offered != kSuccess ? offered : kUnknownInterface;
    }
    interface_ = static_cast<I*>(face);
    return kSuccess;
  }

  /// The interface, valid while this helper lives; null before a successful `loadPlugin`.
  I* get() const { return interface_; }
  I* operator->() const { return interface_; }

 private:
  void release() {
    interface_ = nullptr;
    if (plugin_ != nullptr) std::exchange(plugin_, nullptr)->kpimRelease();
  }

  std::string interfaceId_;
  Plugin* plugin_ = nullptr;
  I* interface_ = nullptr;
};

/// The best plug-in that offers `I` under `interfaceId`, loaded when it has to be and held as long
/// as the result lives. Null if absent, when it cannot be loaded, and for a null
/// `context`. May block while a library is loaded; safe on all threads.
template <class I>
std::unique_ptr<Helper<I>> load(Context* context, const std::string& interfaceId) {
  auto helper = std::make_unique<Helper<I>>(interfaceId);
  const Context::PluginInterfaceFilter filter(interfaceId);
  const Context::SimplePluginInfoSelector selector;
  if (helper->loadPlugin(context, filter, selector, true) != kSuccess) return nullptr;
  return helper;
}

}  // namespace KPIM
