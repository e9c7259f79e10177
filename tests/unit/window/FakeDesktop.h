#pragma once

#include <QStringList>

#include "playerx/window/desktop/Desktop.h"

namespace playerx::window {

/// A desktop that writes down what it is asked to do.
class FakeDesktop : public Desktop {
 public:
  void notify(const QString& topic, const QString&, const QString& text) override {
    calls_ << QStringLiteral("notify %1: %2").arg(topic, text);
  }
  void keepAwake(bool isAwake) override {
    calls_ << (isAwake ? QStringLiteral("awake") : QStringLiteral("may sleep"));
  }
  void showProgress(double part) override { calls_ << QStringLiteral("progress %1").arg(part); }
  void showInFolder(const QString& path) override { calls_ << QStringLiteral("folder ") + path; }

  /// What was asked for since the last call.
  QStringList take() { return std::exchange(calls_, {}); }

 private:
  QStringList calls_;
};

}  // namespace playerx::window
