#include "playerx/window/queue/QueueNotices.h"

#include "playerx/window/model/Sentences.h"

namespace playerx::window {

using session::QueueEvent;

namespace {

bool isRefusedByServices(reasons::Reason reason) {
  using reasons::Reason;
  return reason == Reason::kServicesSaid || reason == Reason::kNotAuthorized ||
         reason == Reason::kNoAuthorization || reason == Reason::kAccessExpired;
}

}  // namespace

std::optional<Notice> noticeOf(const QueueEvent& event, FilmId film) {
  if (event.kind == QueueEvent::Kind::kFailed) {
    const bool isFull = event.reason.code() == "no_space";
    const QString sentence = reasonSentence(event.reason);
    if (isFull) return Notice{.kind = Notice::kNoSpace, .film = film, .text = sentence};
    if (isRefusedByServices(event.reason.reason)) {
      return Notice{.kind = Notice::kNotAuthorized, .film = film, .text = sentence};
    }
  }
  if (event.sentence.empty()) return std::nullopt;
  return Notice{.film = film, .text = queueSentence(event.sentence)};
}

}  // namespace playerx::window
