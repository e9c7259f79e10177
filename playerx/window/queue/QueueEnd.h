#pragma once

#include <functional>
#include <string>
#include <vector>

#include "playerx/app/session/QueueRequest.h"

namespace playerx::window {

/// The queue at work, in this process or in another. Used on one thread, on which it may wait.
class QueueEnd {
 public:
  /// Told within the operations below.
  using Listener = std::function<void(const session::QueueEvent&)>;

  virtual ~QueueEnd() = default;

  /// Carries a request out. Fails when the queue cannot be reached any more.
  virtual session::Reply ask(const session::Request& request) = 0;

  /// Tells the listener what has happened since the last call.
  virtual void update() = 0;

  /// The queue as it is now.
  virtual const std::vector<model::ItemState>& queue() const = 0;
  virtual bool isPaused() const = 0;

  /// Why the queue cannot be reached any more, in one sentence; empty while it can.
  virtual std::string problem() const = 0;
};

}  // namespace playerx::window
