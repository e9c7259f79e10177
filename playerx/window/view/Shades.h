#pragma once

#include <QColor>
#include <QPalette>

namespace playerx::window {

/// Contrast of two opaque colours as WCAG 2 measures it: 1 (the same) to 21 (black on white).
double contrastOf(const QColor& first, const QColor& second);

/// `color` made lighter or darker, as little as needed, until it holds `contrast` on `ground`.
QColor readableOn(const QColor& ground, const QColor& color, double contrast = 4.5);

/// A colour `share` (0..1) of the way from `from` to `to`.
QColor mixed(const QColor& from, const QColor& to, double share);

/// Whether the palette is one of light text on dark ground.
bool isDark(const QPalette& palette);

/// The colours of a row, all derived from the palette.
struct Shades {
  QColor ground;
  QColor title;
  QColor detail;   ///< quieter than the title, still readable
  QColor accent;   ///< of the running film
  QColor warning;  ///< of a failure
  QColor groove;   ///< of the bar, where nothing has arrived
  QColor idleBar;  ///< of the bar of a film that does not run
  QColor line;     ///< between rows

  static Shades of(const QPalette& palette, bool isSelected, QPalette::ColorGroup group);
};

}  // namespace playerx::window
