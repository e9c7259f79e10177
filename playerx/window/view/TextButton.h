#pragma once

#include <QPushButton>

namespace playerx::window {

/// A button whose words keep a distance from its sides, also in styles that leave none.
class TextButton : public QPushButton {
 public:
  using QPushButton::QPushButton;

  QSize sizeHint() const override {
    return QPushButton::sizeHint() + QSize(fontMetrics().height(), 0);
  }
};

}  // namespace playerx::window
