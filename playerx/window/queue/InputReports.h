#pragma once

#include "playerx/app/session/QueueRequest.h"
#include "playerx/framework/PluginContext.h"
#include "playerx/window/queue/QueueMessages.h"

namespace playerx::window {

/// Adds to the report which inputs the queue held already or refused, and why.
void addReply(const session::Reply& reply, InputReport& report);

/// What a ticket says, without asking any server for its films. Asks the online services among the
/// plug-ins for what is in a protected one, and may wait for them.
TicketReport reportOnTicket(const QString& path, PluginContext& plugins);

}  // namespace playerx::window
