#pragma once

#include <QDateTime>
#include <QString>

namespace playerx::window {

/// Numbers as people read them, in the words and digits of the user's language. Units are powers of
/// 1000; a number and its unit do not break apart at the end of a line.

/// "999 B", "5.2 MB", "294 MB", "1.2 GB": one decimal below 100.
QString sizeText(quint64 bytes);

/// "294 of 700 MB": both in the unit of the whole.
QString sizeOfText(quint64 part, quint64 whole);

/// "5.2 MB/s"
QString speedText(quint64 bytesPerSecond);

/// "5 s", "1 min 18 s", "1 h 07 min", "3 d 2 h"
QString durationText(quint64 seconds);

/// "8 min", "1 h 07 min", "3 d 2 h": without seconds, rounded up to a minute.
QString roughDurationText(quint64 seconds);

/// "0:05", "12:34", "1:02:03": a place in a film.
QString clockText(quint64 seconds);

/// "42 %"
QString percentText(int percent);

/// "today", "yesterday", a weekday within the last week, else a date.
QString dayText(const QDateTime& when, const QDateTime& now);

}  // namespace playerx::window
