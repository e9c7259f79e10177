#pragma once

#include <nlohmann/json.hpp>

#include "playerx/app/session/QueueRequest.h"

namespace playerx::session {

/// How the parts of a request are written at the socket.

NLOHMANN_JSON_SERIALIZE_ENUM(Request::Action, {{Request::Action::kList, "list"},
                                               {Request::Action::kWatch, "watch"},
                                               {Request::Action::kAdd, "add"},
                                               {Request::Action::kRemove, "remove"},
                                               {Request::Action::kRetry, "retry"},
                                               {Request::Action::kMove, "move"},
                                               {Request::Action::kPause, "pause"},
                                               {Request::Action::kResume, "resume"},
                                               {Request::Action::kClear, "clear"},
                                               {Request::Action::kClean, "clean"},
                                               {Request::Action::kLimit, "limit"},
                                               {Request::Action::kShow, "show"},
                                               {Request::Action::kPing, "ping"}})

NLOHMANN_JSON_SERIALIZE_ENUM(Request::Direction, {{Request::Direction::kUp, "up"},
                                                  {Request::Direction::kDown, "down"},
                                                  {Request::Direction::kTop, "top"},
                                                  {Request::Direction::kBottom, "bottom"},
                                                  {Request::Direction::kBefore, "before"}})

}  // namespace playerx::session
