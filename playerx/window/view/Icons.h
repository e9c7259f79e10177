#pragma once

#include <QColor>
#include <QIcon>
#include <QString>

namespace playerx::window {

/// The icon of this name from the desktop's theme, or else the player's own drawing, which takes
/// the colour of the text around it.
QIcon themedIcon(const QString& name);

/// The player's own drawing alone; in this colour, or when that is invalid in that of the text.
QIcon ownIcon(const QString& name, const QColor& color = {});

/// The picture that stands for the player.
QIcon applicationIcon();

}  // namespace playerx::window
