#include "playerx/window/model/Numbers.h"

#include <QCoreApplication>
#include <QLocale>
#include <array>

namespace playerx::window {

namespace {

struct Numbers {
  Q_DECLARE_TR_FUNCTIONS(playerx::window::Numbers)
};

constexpr int kUnits = 6;

/// A number and its unit stay on one line.
QString unbroken(QString text) { return text.replace(QLatin1Char(' '), QChar::Nbsp); }

QString withUnit(const QString& number, int unit) {
  switch (unit) {
    case 0:
      return unbroken(Numbers::tr("%1 B").arg(number));
    case 1:
      return unbroken(Numbers::tr("%1 kB").arg(number));
    case 2:
      return unbroken(Numbers::tr("%1 MB").arg(number));
    case 3:
      return unbroken(Numbers::tr("%1 GB").arg(number));
    case 4:
      return unbroken(Numbers::tr("%1 TB").arg(number));
    default:
      return unbroken(Numbers::tr("%1 PB").arg(number));
  }
}

double inUnit(quint64 bytes, int unit) {
  double value = static_cast<double>(bytes);
  for (int i = 0; i < unit; ++i) value /= 1000;
  return value;
}

/// Digits as shown: one decimal below 100, none for bytes.
QString digits(double value, int unit) {
  return QLocale().toString(value, 'f', unit == 0 || value >= 99.95 ? 0 : 1);
}

int unitOf(quint64 bytes) {
  int unit = 0;
  while (unit + 1 < kUnits && inUnit(bytes, unit) >= 999.5) ++unit;
  return unit;
}

QString twoDigits(quint64 number) {
  return QStringLiteral("%1").arg(QLocale().toString(number), 2, QLocale().zeroDigit().front());
}

}  // namespace

QString sizeText(quint64 bytes) {
  const int unit = unitOf(bytes);
  return withUnit(digits(inUnit(bytes, unit), unit), unit);
}

QString sizeOfText(quint64 part, quint64 whole) {
  const int unit = unitOf(whole);
  const QString left = digits(inUnit(part, unit), unit);
  //: Bytes that have arrived, of all bytes: "294 of 700 MB". %2 carries the unit.
  return Numbers::tr("%1 of %2").arg(left, sizeText(whole));
}

QString speedText(quint64 bytesPerSecond) {
  //: A speed; %1 is a size, such as "5.2 MB".
  return Numbers::tr("%1/s").arg(sizeText(bytesPerSecond));
}

QString durationText(quint64 seconds) {
  constexpr quint64 kDay = 86400;
  const quint64 hours = seconds / 3600;
  const quint64 minutes = seconds / 60 % 60;
  if (seconds >= kDay) {
    return unbroken(Numbers::tr("%1 d %2 h").arg(seconds / kDay).arg(hours % 24));
  }
  if (hours > 0) {
    return unbroken(Numbers::tr("%1 h %2 min").arg(hours).arg(twoDigits(minutes)));
  }
  if (minutes > 0) {
    return unbroken(Numbers::tr("%1 min %2 s").arg(minutes).arg(twoDigits(seconds % 60)));
  }
  return unbroken(Numbers::tr("%1 s").arg(seconds));
}

QString roughDurationText(quint64 seconds) {
  const quint64 minutes = (seconds + 59) / 60;
  if (minutes < 60) return unbroken(Numbers::tr("%1 min").arg(minutes));
  return durationText(minutes * 60);
}

QString clockText(quint64 seconds) {
  const QString tail = QStringLiteral(":") + twoDigits(seconds % 60);
  const quint64 hours = seconds / 3600;
  const quint64 minutes = seconds / 60 % 60;
  if (hours == 0) return QLocale().toString(minutes) + tail;
  return QLocale().toString(hours) + QLatin1Char(':') + twoDigits(minutes) + tail;
}

QString percentText(int percent) {
  return unbroken(Numbers::tr("%1 %").arg(QLocale().toString(percent)));
}

QString dayText(const QDateTime& when, const QDateTime& now) {
  const qint64 days = when.date().daysTo(now.date());
  if (days == 0) return Numbers::tr("today");
  if (days == 1) return Numbers::tr("yesterday");
  if (days > 1 && days < 7) return QLocale().dayName(when.date().dayOfWeek());
  return QLocale().toString(when.date(), QLocale::ShortFormat);
}

}  // namespace playerx::window
