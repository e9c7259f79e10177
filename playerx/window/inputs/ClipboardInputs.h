#pragma once

#include <QObject>
#include <QStringList>

namespace playerx::window {

/// What the clipboard holds for the queue. Used on the UI thread.
class ClipboardInputs : public QObject {
  Q_OBJECT

 public:
  explicit ClipboardInputs(QObject* parent = nullptr);

  /// Whether it holds an address or a ticket. Looked at once for each change, because another
  /// program may have to hand its text over.
  bool isUseful() const { return isUseful_; }

  /// Addresses and paths of tickets, read now.
  QStringList read() const;

 Q_SIGNALS:
  void changed();

 private:
  void look();

  bool isUseful_ = false;
};

}  // namespace playerx::window
