#pragma once

#include <QWidget>

class QAction;
class QLabel;
class QPushButton;

namespace playerx::window {

/// What stands in place of an empty list: how to begin, or that the filter leaves nothing.
class EmptyState : public QWidget {
  Q_OBJECT

 public:
  /// The button does what `add` does; not owned.
  explicit EmptyState(QAction* add, QWidget* parent = nullptr);

  void setFiltered(bool isFiltered);

 Q_SIGNALS:
  void inputsDropped(const QStringList& inputs);
  void filterDropped();

 protected:
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void setWords();
  void setLook();

  QAction* const add_;
  QLabel* const picture_;
  QLabel* const title_;
  QLabel* const hint_;
  QPushButton* const button_;
  bool isFiltered_ = false;
};

}  // namespace playerx::window
