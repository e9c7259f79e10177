#include "playerx/window/queue/OwnQueue.h"

#include <utility>

#include "playerx/settings/TrustedAuthorities.h"

namespace playerx::window {

using session::QueueEvent;

namespace {

/// How often the progress of what arrives is measured.
constexpr qint64 kMeasuringMs = 500;

}  // namespace

OwnQueue::OwnQueue(session::PlayerSession& session, Links links, bool staysPaused)
    : session_(session),
      listener_(std::move(links.listener)),
      service_(session, model::QueueTracker::Keep::kAll, std::move(links.wake),
               reasons::serverProbe(trustedAuthorities()),
               [this](const QueueEvent& event) { tell(event); }),
      server_(service_, std::move(links.wakeServer), std::move(links.show)) {
  const std::string problem = server_.listen(session_.places().data);
  if (!problem.empty()) {
    tell({.sentence = problem + " Other players cannot reach this queue."});
  }
  if (staysPaused) session_.pause();
  session_.start();
  service_.deleteLeftovers();
  measured_.start();
}

OwnQueue::~OwnQueue() {
  session_.pause();
  service_.update();
}

void OwnQueue::update() {
  service_.update();
  if (measured_.hasExpired(kMeasuringMs)) {
    measured_.restart();
    service_.watch().measure();
  }
  const model::QueueProgress progress = service_.progress();
  if (progress == std::exchange(told_, progress)) return;
  tell({.kind = QueueEvent::Kind::kQueue, .queue = progress});
}

void OwnQueue::tell(const QueueEvent& event) {
  listener_(event);
  server_.publish(event);
}

}  // namespace playerx::window
