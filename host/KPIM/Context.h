#pragma once

#include <string>

#include "KPIM/Result.h"

namespace KPIM {

class Plugin;
struct PluginInfo;

/// The host's set of plug-ins, as a plug-in sees it. All operations may be called from any thread.
class Context {
 public:
  /// Decides which plug-ins qualify.
  class PluginFilter {
   public:
    PluginFilter() = default;
    PluginFilter(const PluginFilter&) = delete;
    PluginFilter& operator=(const PluginFilter&) = delete;
    virtual ~PluginFilter() = default;

    /// True when the plug-in described by `info` qualifies.
    virtual bool accepts(const PluginInfo& info) const = 0;
  };

  /// Accepts the plug-ins that offer one interface; ids are compared exactly.
  class PluginInterfaceFilter : public PluginFilter {
   public:
    /// For the interface of this id.
    explicit PluginInterfaceFilter(std::string interfaceId);
    bool accepts(const PluginInfo& info) const override;

   private:
    std::string interfaceId_;
  };

  /// Orders plug-ins that qualify; the greatest one is chosen.
  class PluginInfoSelector {
   public:
    PluginInfoSelector() = default;
    PluginInfoSelector(const PluginInfoSelector&) = delete;
    PluginInfoSelector& operator=(const PluginInfoSelector&) = delete;
    virtual ~PluginInfoSelector() = default;

    /// True when `left` is a worse choice than `right`; a strict weak order.
    virtual bool less(const PluginInfo& left, const PluginInfo& right) const = 0;
  };

  /// Prefers the higher version, number by number.
  class SimplePluginInfoSelector : public PluginInfoSelector {
   public:
    SimplePluginInfoSelector() = default;
    bool less(const PluginInfo& left, const PluginInfo& right) const override;
  };

  Context() = default;
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;
  virtual ~Context() = default;

  /// Chooses the best qualifying plug-in among those loaded; when none qualifies and `mayLoad` is
  /// true, among the descriptions not yet loaded, and loads it. Stores it in `*out` with one more
  /// reference, which the caller releases with `kpimRelease`, and returns 0; otherwise returns 1
  /// (none qualifies) or 2 (it could not be loaded) and leaves `*out` alone. May block while a
  /// library is loaded.
  virtual VESK_RESULT getPluginInstance(const PluginFilter& filter,
                                        const PluginInfoSelector& selector, bool mayLoad,
                                        Plugin** out) = 0;
};

}  // namespace KPIM
