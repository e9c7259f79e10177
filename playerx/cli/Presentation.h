#pragma once

#include "playerx/app/session/QueueRequest.h"

namespace playerx::cli {

class Reporter;

/// Tells the user of one thing that happened to the queue.
void present(const session::QueueEvent& event, Reporter& reporter);

/// Tells the user what became of a request; of its items only those of a printed queue are told.
/// Returns the program's exit status.
int present(const session::Request& request, const session::Reply& reply, Reporter& reporter);

}  // namespace playerx::cli
