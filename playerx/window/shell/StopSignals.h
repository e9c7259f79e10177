#pragma once

#include <QObject>
#include <QSocketNotifier>

namespace playerx::window {

/// Ends the program in good order when it is told to by SIGINT, SIGTERM or SIGHUP. One at a time.
class StopSignals : public QObject {
  Q_OBJECT

 public:
  explicit StopSignals(QObject* parent = nullptr);
  ~StopSignals() override;

 Q_SIGNALS:
  void raised();

 private:
  QSocketNotifier notifier_;
};

}  // namespace playerx::window
