#pragma once

#include <optional>

#include "playerx/app/session/QueueRequest.h"
#include "playerx/window/queue/QueueMessages.h"

namespace playerx::window {

/// What the user is told about an event besides the film's own row; nullopt when the row says it
/// all. `film` is the film of the event, 0 for none. Looks at the free space of the folders.
std::optional<Notice> noticeOf(const session::QueueEvent& event, FilmId film);

}  // namespace playerx::window
