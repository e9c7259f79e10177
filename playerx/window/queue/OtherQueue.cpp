#include "playerx/window/queue/OtherQueue.h"

#include <QDeadlineTimer>
#include <algorithm>
#include <utility>

namespace playerx::window {

using session::QueueEvent;
using session::Reply;
using session::Request;
using Kind = QueueEvent::Kind;

namespace {

/// Tickets may have the other process wait for the online services.
constexpr std::chrono::seconds kLongestAnswer(60);

}  // namespace

OtherQueue::OtherQueue(std::unique_ptr<door::QueueClient> client, Listener listener)
    : client_(std::move(client)), listener_(std::move(listener)) {
  silence_.start();
  look(Request::Action::kWatch);
}

Reply OtherQueue::ask(const Request& request) {
  const QDeadlineTimer deadline(kLongestAnswer);
  if (client_->send(request)) ++awaited_;
  while (awaited_ > 0 && client_->problem().empty() && !deadline.hasExpired()) {
    std::optional<Reply> reply = receive(std::chrono::milliseconds(deadline.remainingTime()));
    if (reply && awaited_ == 0) return std::move(*reply);
  }
  return {Reply::Outcome::kFailed, {door::QueueClient::kSilent}};
}

void OtherQueue::update() {
  do {
    isAnswered_ = false;
    receive(std::chrono::milliseconds(0));
  } while (isAnswered_);
  if (isLookDue_) look(Request::Action::kList);
  if (silence_.hasExpired(door::QueueClient::kSilence.count())) mindSilence();
}

/// Takes the next answer; returns it when it is a reply.
std::optional<Reply> OtherQueue::receive(std::chrono::milliseconds longest) {
  std::optional<door::Answer> answer = client_->receive(longest);
  isAnswered_ = answer.has_value();
  if (!answer) return std::nullopt;
  silence_.restart();
  isSaidSilent_ = false;
  if (const auto* const event = std::get_if<QueueEvent>(&*answer)) {
    take(*event);
    return std::nullopt;
  }
  --awaited_;
  return std::get<Reply>(std::move(*answer));
}

/// An event tells how an item is now, but not where it stands.
void OtherQueue::take(const QueueEvent& event) {
  const auto known =
      std::find_if(queue_.begin(), queue_.end(),
                   [&event](const model::ItemState& item) { return item.id == event.item.id; });
  const bool isAboutNone = event.kind == Kind::kNote || event.kind == Kind::kQueue;
  if (known != queue_.end() && known->status == event.item.status && event.kind != Kind::kRemoved) {
    *known = event.item;
  } else if (!isAboutNone) {
    isLookDue_ = true;
  }
  listener_(event);
}

void OtherQueue::look(Request::Action action) {
  isLookDue_ = false;
  Reply reply = ask({.action = action});
  if (reply.outcome != Reply::Outcome::kDone) return;
  queue_ = std::move(reply.items);
  isPaused_ = reply.isPaused;
  for (const model::ItemState& item : queue_) {
    const auto progress = reply.progress.find(item.id);
    if (progress != reply.progress.end()) listener_({Kind::kChanged, item, progress->second});
  }
}

/// A paused queue has nothing to tell; a process that was stopped says nothing either.
void OtherQueue::mindSilence() {
  silence_.restart();
  if (awaited_ == 0) {
    if (client_->send({.action = Request::Action::kPing})) ++awaited_;
  } else if (!std::exchange(isSaidSilent_, true)) {
    listener_({.sentence = door::QueueClient::kSilent});
  }
}

}  // namespace playerx::window
