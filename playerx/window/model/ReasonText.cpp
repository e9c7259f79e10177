#include "playerx/window/model/ReasonText.h"

#include <QCoreApplication>
#include <QRegularExpression>

namespace playerx::window {

namespace {

const QRegularExpression& nameOfFact() {
  static const QRegularExpression kName(QStringLiteral("\\{([a-z]+)\\}"));
  return kName;
}

/// Finds the facts in a sentence of this form, each under its name.
QRegularExpressionMatch factsIn(const QString& sentence, const QString& form) {
  QString pattern;
  qsizetype end = 0;
  for (auto name = nameOfFact().globalMatch(form); name.hasNext();) {
    const QRegularExpressionMatch match = name.next();
    pattern += QRegularExpression::escape(form.sliced(end, match.capturedStart() - end));
    pattern += QStringLiteral("(?<%1>.*)").arg(match.captured(1));
    end = match.capturedEnd();
  }
  pattern =
      QRegularExpression::anchoredPattern(pattern + QRegularExpression::escape(form.sliced(end)));
  return QRegularExpression(pattern, QRegularExpression::DotMatchesEverythingOption)
      .match(sentence);
}

QString filled(const QString& form, const QRegularExpressionMatch& facts) {
  QString text;
  qsizetype end = 0;
  for (auto name = nameOfFact().globalMatch(form); name.hasNext();) {
    const QRegularExpressionMatch match = name.next();
    text += form.sliced(end, match.capturedStart() - end) + facts.captured(match.captured(1));
    end = match.capturedEnd();
  }
  return text + form.sliced(end);
}

}  // namespace

/// A reason from another process or an earlier run carries its facts only inside its English
/// sentence.
QString reasonSentence(const reasons::Explanation& reason) {
  QString text = QString::fromStdString(reason.happened);
  const std::string english = reasons::sentenceForm(reason.reason);
  const QString own = QCoreApplication::translate("Reason", english.c_str());
  const QString form = QString::fromStdString(english);
  if (own != form) {
    const QRegularExpressionMatch facts = factsIn(text, form);
    if (facts.hasMatch()) text = filled(own, facts);
  }
  return text.endsWith(QLatin1Char('.')) ? text : text + QLatin1Char('.');
}

}  // namespace playerx::window
