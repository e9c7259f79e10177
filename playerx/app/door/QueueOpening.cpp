#include "playerx/app/door/QueueOpening.h"

#include <QDeadlineTimer>

namespace playerx::door {

using Outcome = QueueClient::Outcome;
using Where = OpenedQueue::Where;

namespace {

/// Between two attempts.
constexpr std::chrono::milliseconds kPause(20);

/// How long a process that has the queue may take for its greeting.
constexpr std::chrono::seconds kLongestGreeting(3);

}  // namespace

OpenedQueue openQueue(session::PlayerSession& session, session::PlayerSession::Access access,
                      std::chrono::milliseconds longest,
                      const std::function<bool(std::chrono::milliseconds)>& rest) {
  const QDeadlineTimer deadline(longest);
  for (;;) {
    const std::string problem = session.open(access);
    if (problem.empty()) return {Where::kHere};
    if (!session.isTaken()) return {Where::kNowhere, nullptr, problem};
    auto client = std::make_unique<QueueClient>();
    const Outcome outcome = client->connect(session.places().data, kLongestGreeting);
    if (outcome == Outcome::kQueue) return {Where::kThere, std::move(client)};
    if (outcome == Outcome::kIncompatible) return {Where::kNowhere, nullptr, client->problem()};
    if (deadline.hasExpired()) {
      return {Where::kNowhere, nullptr, outcome == Outcome::kBusy ? client->problem() : problem};
    }
    if (!rest(kPause)) return {};
  }
}

}  // namespace playerx::door
