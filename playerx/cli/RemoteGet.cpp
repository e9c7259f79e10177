#include "playerx/cli/RemoteGet.h"

#include <utility>

#include "playerx/cli/Presentation.h"
#include "playerx/cli/Reporter.h"
#include "playerx/cli/WakeUp.h"

namespace playerx::cli {

using session::QueueEvent;
using session::Reply;
using session::Request;
using Kind = QueueEvent::Kind;

namespace {

bool isOutcome(const QueueEvent& event) {
  const bool isPassedOver =
      event.kind == Kind::kChanged && event.item.status == DownloadStatusStopped;
  return isPassedOver || event.kind == Kind::kFinished || event.kind == Kind::kFailed ||
         event.kind == Kind::kRemoved;
}

}  // namespace

RemoteGet::RemoteGet(const Options& options, door::QueueClient& client, Reporter& reporter,
                     WakeUp& wakeUp)
    : options_(options), client_(client), reporter_(reporter), wakeUp_(wakeUp) {}

std::optional<int> RemoteGet::run() {
  bool isThere = sendRequests();
  while (isThere) {
    isThere = takeAnswers();
    if (isDone()) {
      tellWhatIsLeft();
      return status();
    }
    if (!isThere) break;
    const WakeReason reason = wakeUp_.wait(door::QueueClient::kSilence, client_.descriptor());
    if (reason == WakeReason::kInterrupt) return interrupted();
    if (reason == WakeReason::kTimeout) mindSilence();
  }
  return options_.command == Options::kGet ? std::nullopt : std::optional(status());
}

/// A process that was stopped takes no more than the socket holds.
bool RemoteGet::sendRequests() {
  const InterruptsExit exits(kExitInterrupted,
                             "Interrupted before the player that has the queue took everything.");
  return client_.send({.action = Request::Action::kWatch}) &&
         (options_.command != Options::kGet || client_.send(options_.request));
}

Request RemoteGet::remainder() const {
  Request request = options_.request;
  if (replies_ < 2 || request.inputs.empty()) return request;
  request.inputs.clear();
  for (const auto& [id, address] : left_) {
    if (!address.empty()) request.inputs.push_back(address);
  }
  return request;
}

int RemoteGet::status() const {
  if (!lost_.empty()) return kExitFailed;
  return somethingRefused_ ? kExitUsage : kExitDone;
}

/// False when no more will come.
bool RemoteGet::takeAnswers() {
  while (const auto answer = client_.receive(std::chrono::milliseconds(0))) {
    if (std::exchange(isSaidSilent_, false)) reporter_.note("The other player answers again.");
    isAsked_ = false;
    std::visit([this](const auto& each) { take(each); }, *answer);
  }
  return client_.problem().empty();
}

void RemoteGet::take(const Reply& reply) {
  const bool isToWatch = ++replies_ == 1;
  if (isToWatch) reporter_.queueProgress(model::progressOf(reply.items, reply.isPaused));
  const bool isAwaited = replies_ == (options_.command == Options::kGet ? 2 : 1);
  if (isAwaited) beginToWait(reply);
}

/// A paused queue has nothing to tell; a process that was stopped says nothing either.
void RemoteGet::mindSilence() {
  if (!std::exchange(isAsked_, true)) {
    client_.send({.action = Request::Action::kPing});
  } else if (!std::exchange(isSaidSilent_, true)) {
    reporter_.note(door::QueueClient::kSilent);
  }
}

void RemoteGet::beginToWait(const Reply& reply) {
  present(reply, reporter_);
  somethingRefused_ = reply.outcome == Reply::Outcome::kWrongUse;
  for (const model::ItemState& item : reply.items) {
    // One that has failed is still to be told of; others of the whole queue are not our own.
    const bool isOwn = options_.command == Options::kGet || model::isUnfinished(item.status);
    if (!isOwn) continue;
    own_.insert(item.id);
    left_[item.id] = item.url;
    // What was there before is not new, and the other process may have announced the rest.
    bool isAnnounced = reply.known.contains(item.id);
    for (const QueueEvent& event : early_) {
      isAnnounced = isAnnounced || (event.kind == Kind::kAdded && event.item.id == item.id);
    }
    if (!isAnnounced) reporter_.added(item);
  }
  for (const QueueEvent& event : std::exchange(early_, {})) take(event);
}

void RemoteGet::take(const QueueEvent& event) {
  const bool isKnown = replies_ >= (options_.command == Options::kGet ? 2 : 1);
  if (!isKnown) {
    early_.push_back(event);
  } else if (isOwn(event)) {
    show(event);
  }
}

bool RemoteGet::isOwn(const QueueEvent& event) const {
  return options_.command != Options::kGet || event.kind == Kind::kNote ||
         event.kind == Kind::kQueue || own_.contains(event.item.id);
}

void RemoteGet::show(const QueueEvent& event) {
  present(event, reporter_);
  if (event.kind == Kind::kRemoved && left_.contains(event.item.id)) {
    noteRemoved(event.item, reporter_);
  }
  const bool isLost = event.kind == Kind::kFailed || event.kind == Kind::kRemoved;
  if (isLost && left_.contains(event.item.id)) lost_.insert(event.item.id);
  if (isOutcome(event)) left_.erase(event.item.id);
}

bool RemoteGet::isDone() const {
  return options_.command == Options::kGet && replies_ >= 2 && left_.empty();
}

void RemoteGet::tellWhatIsLeft() {
  const std::optional<Reply> reply =
      client_.ask({.action = Request::Action::kList}, door::QueueClient::kSilence);
  if (!reply) return;
  const bool isMeantForAll = options_.request.inputs.empty();
  const auto isLeft = [&](unsigned int id) {
    return (isMeantForAll || own_.contains(id)) && !lost_.contains(id);
  };
  noteIfEmpty(reply->items.size(), reporter_);
  noteWhatIsLeft(reply->items, isLeft, reporter_);
}

int RemoteGet::interrupted() {
  if (options_.command == Options::kGet) {
    reporter_.note("Interrupted; the download goes on in the player that has the queue.");
  }
  return kExitInterrupted;
}

}  // namespace playerx::cli
