#pragma once

#include "playerx/window/desktop/Desktop.h"
#include "playerx/window/desktop/DesktopWorker.h"

class QThread;

namespace playerx::window {

/// The desktop as D-Bus offers it, spoken to on a thread of its own.
class BusDesktop : public Desktop {
  Q_OBJECT

 public:
  explicit BusDesktop(const BusAddresses& addresses = {}, QObject* parent = nullptr);

  /// Gives back what was asked for. A bus that hangs is left behind after a moment.
  ~BusDesktop() override;

  void notify(const QString& topic, const QString& title, const QString& text) override;
  void keepAwake(bool isAwake) override;
  void showProgress(double part) override;
  void showInFolder(const QString& path) override;

 private:
  QThread* thread_;
  DesktopWorker* worker_;  // lives on the thread, deleted when it ends
};

}  // namespace playerx::window
