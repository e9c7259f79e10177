#pragma once

#include <algorithm>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "KPIM/Context.h"
#include "KPIM/Plugin.h"
#include "KPIM/PluginInfo.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "VeskPlayerX/ShutdownInterface.h"
#include "playerx/framework/PluginContext.h"

namespace framework_test {

/// What happened, in order. May be written on any thread.
class Log {
 public:
  void add(const std::string& event) {
    const std::lock_guard lock(mutex_);
    events_.push_back(event);
  }
  std::vector<std::string> events() const {
    const std::lock_guard lock(mutex_);
    return events_;
  }
  long count(const std::string& event) const {
    const std::vector<std::string> all = events();
    return std::count(all.begin(), all.end(), event);
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> events_;
};

/// What a `RecordingPlugin` does beside recording.
struct Behaviour {
  bool offersShutdown = false;
  bool holdsItself = false;  ///< from its birth to its Shutdown
  std::function<void(KPIM::Plugin&)> whenMade = {};
  std::function<void(KPIM::Plugin&)> whenRetained = {};
  std::function<void(KPIM::Plugin&)> whenShutDown = {};
  std::function<void(KPIM::Plugin&)> whenDestroyed = {};
};

/// A plug-in that writes its life down: "made X", "shutdown X", "destroyed X".
class RecordingPlugin : public KPIM::Plugin, public VeskPlayerX::ShutdownInterface {
 public:
  RecordingPlugin(KPIM::Context* context, std::string name, Log& log, Behaviour behaviour)
      : Plugin(context), name_(std::move(name)), log_(log), behaviour_(std::move(behaviour)) {
    log_.add("made " + name_);
    if (behaviour_.whenMade) behaviour_.whenMade(*this);
    if (behaviour_.holdsItself) Plugin::kpimRetain();
  }
  ~RecordingPlugin() override {
    if (behaviour_.whenDestroyed) behaviour_.whenDestroyed(*this);
    log_.add("destroyed " + name_);
  }

  int kpimRetain() override {
    if (behaviour_.whenRetained) behaviour_.whenRetained(*this);
    return Plugin::kpimRetain();
  }

  KPIM::VESK_RESULT kpimGetInterface(std::string id, void** out) override {
    if (id == VeskPlayerX::DIN_Shutdown && behaviour_.offersShutdown) {
      *out = static_cast<VeskPlayerX::ShutdownInterface*>(this);
      return KPIM::kSuccess;
    }
    if (id != name_) return KPIM::kUnknownInterface;
    *out = &name_;
    return KPIM::kSuccess;
  }

  void Shutdown() override {
    log_.add("shutdown " + name_);
    if (behaviour_.whenShutDown) behaviour_.whenShutDown(*this);
    if (behaviour_.holdsItself) kpimRelease();
  }

 private:
  std::string name_;
  Log& log_;
  Behaviour behaviour_;
};

/// Offers a recording plug-in that has one interface, named as itself.
inline void addRecording(playerx::PluginContext& context, Log& log, const std::string& name,
                         const Behaviour& behaviour = {}, const std::string& version = "1.0") {
  context.add({name, version, {name}}, [name, &log, behaviour](KPIM::Context* host, void** out) {
    *out = static_cast<KPIM::Plugin*>(new RecordingPlugin(host, name, log, behaviour));
    return KPIM::kSuccess;
  });
}

struct Releaser {
  void operator()(KPIM::Plugin* plugin) const { plugin->kpimRelease(); }
};
using Held = std::unique_ptr<KPIM::Plugin, Releaser>;

/// The plug-in found for an interface, held, and the answer.
struct Found {
  KPIM::VESK_RESULT result;
  Held plugin;
};

inline Found find(KPIM::Context& context, const std::string& interfaceId, bool mayLoad = true) {
  KPIM::Plugin* plugin = nullptr;
  const KPIM::VESK_RESULT result =
      context.getPluginInstance(KPIM::Context::PluginInterfaceFilter(interfaceId),
                                KPIM::Context::SimplePluginInfoSelector(), mayLoad, &plugin);
  return {result, Held(plugin)};
}

}  // namespace framework_test
