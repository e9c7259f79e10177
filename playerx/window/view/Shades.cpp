#include "playerx/window/view/Shades.h"

#include <algorithm>
#include <cmath>

namespace playerx::window {

namespace {

constexpr QColor kWarning(0xC0, 0x39, 0x2B);

double linear(double channel) {
  return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
         0.0722 * linear(color.blueF());
}

}  // namespace

double contrastOf(const QColor& first, const QColor& second) {
  const auto [darker, lighter] = std::minmax({luminance(first), luminance(second)});
  return (lighter + 0.05) / (darker + 0.05);
}

QColor readableOn(const QColor& ground, const QColor& color, double contrast) {
  constexpr int kSteps = 20;
  const QColor white(Qt::white);
  const QColor black(Qt::black);
  const QColor goal = contrastOf(ground, white) > contrastOf(ground, black) ? white : black;
  for (int step = 0; step < kSteps; ++step) {
    const QColor candidate = mixed(color, goal, static_cast<double>(step) / kSteps);
    if (contrastOf(ground, candidate) >= contrast) return candidate;
  }
  return goal;
}

QColor mixed(const QColor& from, const QColor& to, double share) {
  const auto blend = [share](float a, float b) { return static_cast<float>(a + (b - a) * share); };
  return QColor::fromRgbF(blend(from.redF(), to.redF()), blend(from.greenF(), to.greenF()),
                          blend(from.blueF(), to.blueF()));
}

bool isDark(const QPalette& palette) { return palette.color(QPalette::Window).lightness() < 128; }

Shades Shades::of(const QPalette& palette, bool isSelected, QPalette::ColorGroup group) {
  Shades shades;
  const QColor highlight = palette.color(group, QPalette::Highlight);
  const QColor base = palette.color(group, QPalette::Base);
  const QColor text = palette.color(group, QPalette::Text);
  // A selected row is tinted, not filled, so that bar and warning keep their colours in it.
  shades.ground = isSelected ? mixed(base, highlight, isDark(palette) ? 0.32 : 0.16) : base;
  shades.title = readableOn(shades.ground, text, 7);
  shades.detail = readableOn(shades.ground, mixed(text, base, 0.4));
  shades.accent = readableOn(shades.ground, highlight, 3);
  shades.warning = readableOn(shades.ground, kWarning);
  shades.groove = mixed(shades.ground, text, 0.14);
  shades.idleBar = mixed(shades.ground, text, 0.45);
  shades.line = mixed(base, text, 0.09);
  return shades;
}

}  // namespace playerx::window
