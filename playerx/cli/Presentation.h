#pragma once

#include <map>
#include <vector>

#include "playerx/app/session/Places.h"
#include "playerx/app/session/QueueRequest.h"

namespace playerx::cli {

class Reporter;

/// Of the items that arrive, by id.
using ProgressOfItems = std::map<unsigned int, model::Progress>;

/// Tells the user of one thing that happened to the queue.
void present(const session::QueueEvent& event, Reporter& reporter);

/// Tells the user what became of a request, without its items. Returns the program's exit status.
int present(const session::Reply& reply, Reporter& reporter);

/// Prints a queue of these places: why its items failed, what is odd about its films, and with
/// `isLong` their addresses.
void print(const std::vector<model::ItemState>& queue, const ProgressOfItems& progress,
           const session::Places& places, bool isLong, Reporter& reporter);

}  // namespace playerx::cli
