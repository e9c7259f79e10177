#pragma once

#include <memory>
#include <string>

#include "KPIM/Result.h"

namespace KPIM {

class Context;
struct PluginInfo;

/// Base of every plug-in object: its context and its reference count.
///
/// Built on the heap with a count of 1, a reference that belongs to the caller of the plug-in's
/// creation function; destroys itself when the count falls to 0. References may be taken and
/// released on any thread. The order of the virtual operations is part of the interface.
class Plugin {
 public:
  /// `context` is not owned and outlives the plug-in.
  explicit Plugin(Context* context);
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;
  virtual ~Plugin();

  /// Takes one more reference; returns the new count.
  virtual int kpimRetain();

  /// Releases one reference; returns the new count. At 0 the object is gone.
  virtual int kpimRelease();

  /// The present reference count.
  virtual int kpimHoldCount();

  /// The description by which the context loaded this plug-in; null when it was built without one.
  /// Owned by the context.
  virtual const PluginInfo* kpimGetPluginInfo();

  /// The context given to the constructor.
  virtual Context* kpimGetPluginContext();

  /// Stores the face named `id` in `*out` and returns `kSuccess`, or leaves `*out` alone and
  /// returns `kUnknownInterface`. The face lives as long as the plug-in; no reference is taken.
  virtual VESK_RESULT kpimGetInterface(std::string id, void** out);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// Type of the one function that a plug-in library exports, under the name `getPlugin` with C
/// linkage. Stores a new plug-in with a reference count of 1 in `*out` and returns 0.
using GetPluginFunction = VESK_RESULT(Context* context, void** out);

}  // namespace KPIM
