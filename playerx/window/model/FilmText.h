#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

#include "playerx/window/model/Film.h"

namespace playerx::window {

/// The words of a film's row, in the user's language. Text that came from outside is cleaned of
/// characters that would steer how the rest is shown.

/// `text` with control characters and marks that turn the direction of text replaced.
QString cleanText(const QString& text);

/// Facts side by side, "films.example · 700 MB"; empty ones are left out. Each keeps its own
/// direction, whatever the direction of the window.
QString sideBySide(const QStringList& facts);

/// The title, or else what the address ends in.
QString displayTitle(const Film& film);

/// "Waiting", "Downloading", ...
QString stateWord(FilmState state);

/// The state with the percentage of a film that is arriving: "Downloading · 42 %".
QString stateText(const Film& film);

/// The row's second line: numbers, or the reason of a failure.
QString detailText(const Film& film, const QDateTime& now);

/// One sentence with everything that the row shows, for a screen reader.
QString accessibleText(const Film& film);

/// The title in full, the path or the address, and the stable code of a failure.
QString toolTipText(const Film& film);

/// What "Copy details" gives to a person who helps: title, address, state, failure with its code.
QString detailsForHelp(const Film& film);

}  // namespace playerx::window
