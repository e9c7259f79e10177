#pragma once

#include "playerx/window/queue/QueueMessages.h"

namespace playerx::window {

/// The preferences as they hold for this run. On the host's thread.
QueuePreferences storedPreferences();

/// Stores the preferences where the player's modules read them. On the host's thread.
void storePreferences(const QueuePreferences& preferences);

/// Has all transfers of this run use the proxy of the preferences. Changes the environment: call it
/// before any thread is started.
void useStoredProxy();

/// The folder for films as it is now.
QString mediaFolder();

/// The folder for films that are not complete.
QString partialFolder();

/// Bytes that the user may still write there; 0 when that cannot be learnt.
quint64 freeSpace(const QString& path);

}  // namespace playerx::window
