#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "playerx/app/door/QueueClient.h"
#include "playerx/app/session/PlayerSession.h"

namespace playerx::door {

/// Where a queue was opened.
struct OpenedQueue {
  enum class Where { kHere, kThere, kNowhere };

  Where where = Where::kNowhere;
  std::unique_ptr<QueueClient> client{};  ///< to the process that holds the queue, for kThere
  std::string problem{};                  ///< for kNowhere; empty when the user has given up
};

/// Opens the queue of a session for changes (kChange or kFree), or finds the process that holds it
/// already. A process that holds it without serving it is waited for, `longest` at most. `rest`
/// waits for that long, and returns false when the user gives up. On the session's thread.
OpenedQueue openQueue(session::PlayerSession& session, session::PlayerSession::Access access,
                      std::chrono::milliseconds longest,
                      const std::function<bool(std::chrono::milliseconds)>& rest);

}  // namespace playerx::door
