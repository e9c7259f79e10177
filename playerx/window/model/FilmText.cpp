#include "playerx/window/model/FilmText.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QUrl>
#include <algorithm>

#include "playerx/window/model/Numbers.h"

namespace playerx::window {

namespace {

struct FilmText {
  Q_DECLARE_TR_FUNCTIONS(playerx::window::FilmText)
};

bool turnsDirection(QChar c) {
  const char16_t code = c.unicode();
  return (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

bool isSteering(QChar c) {
  const QChar::Category category = c.category();
  return category == QChar::Other_Control || category == QChar::Separator_Line ||
         category == QChar::Separator_Paragraph || turnsDirection(c);
}

/// As a part of a line that runs from right to left, text in another script keeps its order.
QString isolated(const QString& fact) {
  constexpr char16_t kIsolate = 0x2068;
  constexpr char16_t kEnd = 0x2069;
  return QGuiApplication::isRightToLeft() ? QChar(kIsolate) + fact + QChar(kEnd) : fact;
}

QString progressNumbers(const Film& film) {
  if (film.size == 0) return film.arrived == 0 ? QString() : sizeText(film.arrived);
  return film.arrived == 0 ? sizeText(film.size) : sizeOfText(film.arrived, film.size);
}

QString timeLeftText(const Film& film) {
  if (!film.secondsLeft) return FilmText::tr("time left unknown");
  return FilmText::tr("%1 left").arg(durationText(*film.secondsLeft));
}

QString downloadingText(const Film& film) {
  const QString speed = film.bytesPerSecond == 0 ? QString() : speedText(film.bytesPerSecond);
  return sideBySide({progressNumbers(film), speed, timeLeftText(film), cleanText(film.provider)});
}

bool showsPercent(const Film& film) {
  switch (film.state) {
    case FilmState::kDownloading:
    case FilmState::kHeld:
      return true;
    case FilmState::kPaused:
    case FilmState::kStopped:
    case FilmState::kWaiting:
      return film.percent > 0;
    default:
      return false;
  }
}

}  // namespace

QString cleanText(const QString& text) {
  QString clean = text;
  std::replace_if(clean.begin(), clean.end(), isSteering, QChar(QChar::ReplacementCharacter));
  return clean;
}

QString sideBySide(const QStringList& facts) {
  QString line;
  for (const QString& fact : facts) {
    if (fact.isEmpty()) continue;
    const QString part = isolated(fact);
    //: Puts two facts side by side; %1 and %2 are complete in themselves.
    line = line.isEmpty() ? part : FilmText::tr("%1 · %2").arg(line, part);
  }
  return line;
}

QString displayTitle(const Film& film) {
  const QString title = cleanText(film.title).trimmed();
  if (!title.isEmpty()) return title;
  const QString name = cleanText(QUrl(film.address).fileName());
  return name.isEmpty() ? FilmText::tr("Film without a title") : name;
}

QString stateWord(FilmState state) {
  switch (state) {
    case FilmState::kWaiting:
      return FilmText::tr("Waiting");
    case FilmState::kConnecting:
      return FilmText::tr("Connecting");
    case FilmState::kDownloading:
      return FilmText::tr("Downloading");
    case FilmState::kPaused:
      return FilmText::tr("Paused");
    case FilmState::kDone:
      return FilmText::tr("Done");
    case FilmState::kFailed:
      return FilmText::tr("Failed");
    case FilmState::kStopped:
      return FilmText::tr("Stopped");
    case FilmState::kHeld:
      return FilmText::tr("Held");
  }
  return {};
}

QString stateText(const Film& film) {
  const QString word = stateWord(film.state);
  return showsPercent(film) ? sideBySide({word, percentText(film.percent)}) : word;
}

QString detailText(const Film& film, const QDateTime& now) {
  switch (film.state) {
    case FilmState::kDownloading:
    case FilmState::kHeld:
      return downloadingText(film);
    case FilmState::kFailed:
      if (!film.failure.sentence.isEmpty()) return cleanText(film.failure.sentence);
      return FilmText::tr("Looking for the reason…");
    case FilmState::kDone: {
      const QString day = film.finishedAt.isValid() ? dayText(film.finishedAt, now) : QString();
      const QString size = film.size == 0 ? QString() : sizeText(film.size);
      return sideBySide({size, cleanText(film.provider), day});
    }
    default:
      return sideBySide({progressNumbers(film), cleanText(film.provider)});
  }
}

QString accessibleText(const Film& film) {
  const QString title = displayTitle(film);
  const QString word = stateWord(film.state);
  if (film.state == FilmState::kFailed) {
    return FilmText::tr("%1, %2: %3").arg(title, word, detailText(film, QDateTime()));
  }
  if (!showsPercent(film)) return FilmText::tr("%1, %2").arg(title, word);
  //: For a screen reader: title, state, percent.
  return FilmText::tr("%1, %2, %3 percent").arg(title, word).arg(film.percent);
}

QString toolTipText(const Film& film) {
  QStringList lines = {displayTitle(film)};
  const QString place = film.state == FilmState::kDone ? film.path : film.address;
  if (!place.isEmpty()) lines << cleanText(place);
  if (film.state == FilmState::kFailed && !film.failure.code.isEmpty()) {
    lines << cleanText(film.failure.sentence);
    lines << FilmText::tr("Code: %1").arg(film.failure.code);
  }
  QStringList escaped;
  for (const QString& line : lines) escaped << line.toHtmlEscaped();
  return QStringLiteral("<p style='white-space:pre-wrap'>") + escaped.join(QStringLiteral("<br>")) +
         QStringLiteral("</p>");
}

QString detailsForHelp(const Film& film) {
  QStringList lines = {displayTitle(film), cleanText(film.address), stateText(film)};
  if (film.state == FilmState::kFailed) {
    lines << cleanText(film.failure.sentence) << FilmText::tr("Code: %1").arg(film.failure.code);
  }
  return lines.join(QLatin1Char('\n'));
}

}  // namespace playerx::window
