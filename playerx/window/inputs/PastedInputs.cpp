#include "playerx/window/inputs/PastedInputs.h"

#include <QMimeData>
#include <QSet>
#include <QUrl>

#include "playerx/app/inputs/InputText.h"

namespace playerx::window {

namespace {

/// A longer clipboard is looked at no further when the question is whether it is worth pasting.
constexpr qsizetype kLongestLook = 100'000;

/// In characters. A request to another process holds a hundred of them.
constexpr qsizetype kLongestAddress = 16'384;

bool startsAsWebAddress(const QString& text) {
  if (text.size() > kLongestAddress) return false;
  for (const QLatin1String scheme : {QLatin1String("http://"), QLatin1String("https://")}) {
    if (text.startsWith(scheme, Qt::CaseInsensitive)) return text.size() > scheme.size();
  }
  return false;
}

bool isTicketPath(const QString& text) {
  return text.endsWith(QLatin1String(".tix"), Qt::CaseInsensitive);
}

QString localTicket(const QString& text) {
  const QUrl url(text);
  return url.isLocalFile() ? url.toLocalFile() : text;
}

class Collector {
 public:
  void takeLine(const QString& line) {
    const QString text = QString::fromStdString(inputs::unquoted(line.trimmed().toStdString()));
    if (text.isEmpty() || text.startsWith(QLatin1Char('#'))) return;
    if (!startsAsWebAddress(text) && isTicketPath(text)) return take(localTicket(text));
    bool found = false;
    for (const QString& word : text.simplified().split(QLatin1Char(' '))) {
      if (!startsAsWebAddress(word)) continue;
      take(word);
      found = true;
    }
    if (!found) result_.leftOut.append(text);
  }

  void take(const QString& input) {
    if (seen_.contains(input)) return;
    seen_.insert(input);
    result_.inputs.append(input);
  }

  bool holdsInput() const { return !result_.inputs.isEmpty(); }

  PastedInputs result() && { return std::move(result_); }

 private:
  PastedInputs result_;
  QSet<QString> seen_;
};

}  // namespace

PastedInputs inputsInText(const QString& text) {
  Collector collector;
  for (const QString& line : text.split(QLatin1Char('\n'))) collector.takeLine(line);
  return std::move(collector).result();
}

PastedInputs inputsInData(const QMimeData& data) {
  if (!data.hasUrls()) return inputsInText(data.text());
  Collector collector;
  for (const QUrl& url : data.urls()) {
    collector.takeLine(url.isLocalFile() ? url.toLocalFile() : QString::fromUtf8(url.toEncoded()));
  }
  return std::move(collector).result();
}

bool holdsInput(const QMimeData& data) {
  if (data.hasUrls()) return !inputsInData(data).inputs.isEmpty();
  const QString text = data.text();
  Collector collector;
  for (const QStringView line : QStringView(text).left(kLongestLook).tokenize(u'\n')) {
    collector.takeLine(line.toString());
    if (collector.holdsInput()) return true;
  }
  return false;
}

}  // namespace playerx::window
