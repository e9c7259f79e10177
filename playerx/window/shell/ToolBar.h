#pragma once

#include <QToolBar>

namespace playerx::window {

class ActionSet;

/// The window's tools, with `end` behind them. Their buttons have texts as long as all of it fits
/// into the window, else icons alone.
class ToolBar : public QToolBar {
  Q_OBJECT

 public:
  /// `end` becomes its child.
  ToolBar(const ActionSet& actions, QWidget* end, QWidget* parent = nullptr);

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void fit();
};

}  // namespace playerx::window
