#pragma once

#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "KPIM/Context.h"
#include "KPIM/Plugin.h"
#include "KPIM/PluginInfo.h"

namespace support {

/// A plug-in that offers one interface. Its holds are counted by the framework's own base.
class FakePlugin : public KPIM::Plugin {
 public:
  FakePlugin(KPIM::Context* context, std::string id, void* face)
      : KPIM::Plugin(context), id_(std::move(id)), face_(face) {}

  KPIM::VESK_RESULT kpimGetInterface(std::string id, void** out) override {
    if (id != id_) return KPIM::kUnknownInterface;
    *out = face_;
    return KPIM::kSuccess;
  }

 private:
  const std::string id_;
  void* const face_;
};

/// The host's set of plug-ins: hands out fakes by interface id, and can be told to fail.
/// Owner: the test; outlives every caller that looks plug-ins up in it. Threads: any.
class FakeContext : public KPIM::Context {
 public:
  ~FakeContext() override {
    for (auto& [id, offer] : offers_) offer.plugin->kpimRelease();
  }

  /// Offers `face`, not owned, under `id`.
  template <class I>
  void offer(const std::string& id, I* face) {
    const std::lock_guard lock(mutex_);
    Offer& offer = offers_[id];
    if (offer.plugin != nullptr) offer.plugin->kpimRelease();
    offer.plugin = new FakePlugin(this, id, static_cast<void*>(face));
  }

  /// From now on, looking `id` up answers `result`; 0 takes it back.
  void answer(const std::string& id, KPIM::VESK_RESULT result) {
    const std::lock_guard lock(mutex_);
    answers_[id] = result;
  }

  /// Holds that others have on the plug-in behind `id`.
  int holds(const std::string& id) const {
    const std::lock_guard lock(mutex_);
    const auto found = offers_.find(id);
    return found == offers_.end() ? 0 : found->second.plugin->kpimHoldCount() - 1;
  }

  /// How often `id` was looked up with success.
  int lookups(const std::string& id) const {
    const std::lock_guard lock(mutex_);
    const auto found = offers_.find(id);
    return found == offers_.end() ? 0 : found->second.lookups;
  }

  /// Whether any lookup came without the leave to load.
  bool wasAskedNotToLoad() const {
    const std::lock_guard lock(mutex_);
    return askedNotToLoad_;
  }

  /// Whether any lookup came with another filter than that of an interface, or with another
  /// selector than the simple one.
  bool wasAskedToChooseOtherwise() const {
    const std::lock_guard lock(mutex_);
    return askedToChooseOtherwise_;
  }

  KPIM::VESK_RESULT getPluginInstance(const PluginFilter& filter,
                                      const PluginInfoSelector& selector, bool mayLoad,
                                      KPIM::Plugin** out) override {
    const std::lock_guard lock(mutex_);
    const bool asUsual = dynamic_cast<const PluginInterfaceFilter*>(&filter) != nullptr &&
                         dynamic_cast<const SimplePluginInfoSelector*>(&selector) != nullptr;
    askedToChooseOtherwise_ = askedToChooseOtherwise_ || !asUsual;
    askedNotToLoad_ = askedNotToLoad_ || !mayLoad;
    for (const auto& [id, result] : answers_) {
      if (result != KPIM::kSuccess && filter.accepts({"fake", "1.0", {id}})) return result;
    }
    for (auto& [id, offer] : offers_) {
      if (filter.accepts({"fake", "1.0", {id}})) return hand(offer, out);
    }
    return KPIM::kNoSuchPlugin;
  }

 private:
  struct Offer {
    FakePlugin* plugin = nullptr;  ///< one hold on it belongs to this context
    int lookups = 0;
  };

  static KPIM::VESK_RESULT hand(Offer& offer, KPIM::Plugin** out) {
    ++offer.lookups;
    offer.plugin->kpimRetain();
    *out = offer.plugin;
    return KPIM::kSuccess;
  }

  mutable std::mutex mutex_;
  std::map<std::string, Offer> offers_;
  std::map<std::string, KPIM::VESK_RESULT> answers_;
  bool askedNotToLoad_ = false;
  bool askedToChooseOtherwise_ = false;
};

}  // namespace support
