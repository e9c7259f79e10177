#pragma once

#include <QList>
#include <QTimer>
#include <QWidget>
#include <functional>

class QHBoxLayout;
class QLabel;
class QSpinBox;
class QToolButton;

namespace playerx::window {

/// Something to tell or to ask, without stopping anything.
struct StripMessage {
  struct Answer {
    QString text;
    std::function<void()> use;  ///< runs when the user chooses it; the message is gone then
  };

  QString topic{};  ///< a later message of the same topic replaces an earlier one
  QString text{};   ///< plain
  bool isWarning = false;
  bool asksNumber = false;  ///< shows a field whose value is `MessageStrip::number`
  QList<Answer> answers{};
  int lifetimeMs = 0;             ///< 0: until answered or closed
  std::function<void()> ended{};  ///< runs when the message goes without an answer; may be empty
};

/// The quiet strip above the list: shows the message that came last and keeps the others behind it.
/// Hidden while there is nothing to say. Used on the UI thread.
class MessageStrip : public QWidget {
  Q_OBJECT

 public:
  explicit MessageStrip(QWidget* parent = nullptr);

  void show(StripMessage message);

  /// Takes the message of a topic away, as if it had been closed.
  void end(const QString& topic);

  /// The text that is shown; empty when the strip is hidden.
  QString text() const;

  /// What the user has put into the field of the message that was answered last, 0..999.
  int number() const;

  int count() const { return static_cast<int>(messages_.size()); }

 protected:
  void changeEvent(QEvent* event) override;

 private:
  void showLast();
  void answer(int answer);
  void close();
  void expire();
  void setLook();

  QLabel* const icon_;
  QLabel* const text_;
  QSpinBox* const number_;
  QLabel* const more_;
  QToolButton* const close_;
  QHBoxLayout* const row_;
  QList<QWidget*> buttons_;       // children
  QList<StripMessage> messages_;  // the last one is shown
  QList<qint64> deadlines_;       // of messages_, by the timer's clock; 0 for none
  QTimer timer_;
};

}  // namespace playerx::window
