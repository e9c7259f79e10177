#pragma once

namespace VeskPlayerX {

/// A plug-in that has to end its work before it is unloaded.
class ShutdownInterface {
 public:
  ShutdownInterface() = default;
  ShutdownInterface(const ShutdownInterface&) = delete;
  ShutdownInterface& operator=(const ShutdownInterface&) = delete;
  virtual ~ShutdownInterface() = default;

  /// Ends all work and all threads of the plug-in, then releases the reference that the plug-in
  /// had taken to itself. Afterwards only releasing is allowed. Called once, on the host's thread.
  virtual void Shutdown() = 0;
};

}  // namespace VeskPlayerX
