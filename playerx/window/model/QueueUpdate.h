#pragma once

#include <QList>
#include <QMetaType>
#include <optional>

#include "playerx/window/model/Film.h"

namespace playerx::window {

/// The difference between two looks at the queue.
struct QueueUpdate {
  QList<Film> films;                   ///< those that are new or have changed, as they are now
  std::optional<QList<FilmId>> order;  ///< every film's id; nullopt when the order is as it was
  bool isPaused = false;               ///< the user has paused the queue

  /// Adds what happened after this update.
  void append(const QueueUpdate& later);
};

}  // namespace playerx::window

Q_DECLARE_METATYPE(playerx::window::QueueUpdate)
