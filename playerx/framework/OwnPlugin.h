#pragma once

#include <string>

#include "KPIM/Plugin.h"
#include "KPIM/PluginInfo.h"
#include "playerx/framework/PluginContext.h"

namespace playerx {

/// A plug-in of the program itself, which offers one interface that it does not own.
template <class Interface>
class OwnPlugin : public KPIM::Plugin {
 public:
  OwnPlugin(KPIM::Context* context, std::string id, Interface& offered)
      : KPIM::Plugin(context), id_(std::move(id)), offered_(offered) {}

  KPIM::VESK_RESULT kpimGetInterface(std::string id, void** out) override {
    if (id != id_) return KPIM::kUnknownInterface;
    *out = &offered_;
    return KPIM::kSuccess;
  }

 private:
  const std::string id_;
  Interface& offered_;
};

/// Offers an interface, the only one of `info`, to the plug-ins of `context`, which must not
/// outlive it.
template <class Interface>
void offerOwn(PluginContext& context, const KPIM::PluginInfo& info, Interface& offered) {
  context.add(info, [id = info.interfaces.front(), &offered](KPIM::Context* owner, void** out) {
    *out = static_cast<KPIM::Plugin*>(new OwnPlugin<Interface>(owner, id, offered));
    return KPIM::kSuccess;
  });
}

}  // namespace playerx
