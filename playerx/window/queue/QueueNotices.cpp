#include "playerx/window/queue/QueueNotices.h"

#include "playerx/app/model/FilmCheck.h"
#include "playerx/window/model/Sentences.h"
#include "playerx/window/queue/QueuePlaces.h"

namespace playerx::window {

using session::QueueEvent;

namespace {

bool isRefusedByServices(reasons::Reason reason) {
  using reasons::Reason;
  return reason == Reason::kServicesSaid || reason == Reason::kNotAuthorized ||
         reason == Reason::kNoAuthorization || reason == Reason::kAccessExpired;
}

/// The films' folder may be on another disk than the one for unfinished films.
Notice noSpaceNotice(FilmId film, quint64 size) {
  const quint64 needed = model::spaceNeededFor(size);
  QString folder = partialFolder();
  if (freeSpace(folder) >= needed) folder = mediaFolder();
  return {.kind = Notice::kNoSpace,
          .film = film,
          .text = folder,
          .needed = needed,
          .free = freeSpace(folder)};
}

}  // namespace

std::optional<Notice> noticeOf(const QueueEvent& event, FilmId film) {
  if (event.kind == QueueEvent::Kind::kFailed) {
    if (event.reason.code() == "no_space") return noSpaceNotice(film, event.item.size);
    if (isRefusedByServices(event.reason.reason)) {
      return Notice{
          .kind = Notice::kNotAuthorized, .film = film, .text = reasonSentence(event.reason)};
    }
  }
  if (event.sentence.empty()) return std::nullopt;
  return Notice{.film = film, .text = queueSentence(event.sentence)};
}

}  // namespace playerx::window
