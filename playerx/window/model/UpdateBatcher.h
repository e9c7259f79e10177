#pragma once

#include <QObject>
#include <QTimer>

#include "playerx/window/model/QueueUpdate.h"

namespace playerx::window {

/// Passes updates on at most four times a second, merged; the first one after a rest at once. Used
/// on one thread with an event loop.
class UpdateBatcher : public QObject {
  Q_OBJECT

 public:
  static constexpr int kIntervalMs = 250;

  explicit UpdateBatcher(QObject* parent = nullptr);

  void add(const QueueUpdate& update);

  /// Passes on what waits, now.
  void flush();

 Q_SIGNALS:
  void ready(const playerx::window::QueueUpdate& update);

 private:
  QTimer pause_;
  std::optional<QueueUpdate> waiting_;
};

}  // namespace playerx::window
