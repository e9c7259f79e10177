#include "playerx/window/model/Sentences.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <iterator>
#include <optional>

namespace playerx::window {

namespace {

/// What queue, tickets and plug-ins say, with the names of the facts in braces: another process,
/// too, hands over nothing but English text. "{words}" is itself such a sentence, or technical.
constexpr const char* kForms[] = {
    // A ticket.
    QT_TRANSLATE_NOOP("Sentence", "The ticket is empty."),
    QT_TRANSLATE_NOOP("Sentence", "A ticket begins with the line TixVeskVersion=1.0."),
    QT_TRANSLATE_NOOP("Sentence", "This ticket's version is {version}; only version 1.0 is known."),
    QT_TRANSLATE_NOOP("Sentence", "There is no line \"start\", so the ticket names no film."),
    QT_TRANSLATE_NOOP("Sentence", "This film has no line \"url=\", so it cannot be fetched."),
    QT_TRANSLATE_NOOP("Sentence", "This film has no line \"end\"."),
    QT_TRANSLATE_NOOP("Sentence", "This film has no line \"end\" before the next \"start\"."),
    QT_TRANSLATE_NOOP("Sentence", "There is an \"end\" without a \"start\"."),
    QT_TRANSLATE_NOOP("Sentence", "The rest of this ticket is not listed."),
    QT_TRANSLATE_NOOP("Sentence", "The online services name no film for this protected ticket."),
    QT_TRANSLATE_NOOP("Sentence", "This is an address, not a ticket file."),

    // The online services.
    QT_TRANSLATE_NOOP("Sentence", "The online services answered with status {status}."),
    QT_TRANSLATE_NOOP("Sentence",
                      "The online services gave no proper answer; check their address "
                      "(--services), or try again later."),
    QT_TRANSLATE_NOOP("Sentence",
                      "The address of the online services (--services) does not begin "
                      "with http:// or https://."),
    QT_TRANSLATE_NOOP("Sentence",
                      "The online services cannot be reached ({words}); check their address "
                      "(--services), or try again later."),
    QT_TRANSLATE_NOOP("Sentence",
                      "The player ended before the online services answered; try again."),
    QT_TRANSLATE_NOOP("Sentence", "There is too little memory to ask the online services."),
    QT_TRANSLATE_NOOP("Sentence", "The online services cannot read this ticket."),
    QT_TRANSLATE_NOOP("Sentence", "The online services refuse this download."),
    QT_TRANSLATE_NOOP("Sentence", "The online services gave no proper answer."),
    QT_TRANSLATE_NOOP("Sentence", "The online services gave an incomplete answer."),
    QT_TRANSLATE_NOOP("Sentence", "error {number}"),
    QT_TRANSLATE_NOOP("Sentence", "error {number}: {words}"),

    // Room on the disk.
    QT_TRANSLATE_NOOP("Sentence", "{needed} needed, {free} free"),
    QT_TRANSLATE_NOOP("Sentence", "{needed} needed"),
    QT_TRANSLATE_NOOP("Sentence", "{free} free"),

    // A film.
    QT_TRANSLATE_NOOP("Sentence", "{title} lies at {place}, in the present media folder."),
    QT_TRANSLATE_NOOP("Sentence", "{title} is not there any more."),
    QT_TRANSLATE_NOOP("Sentence",
                      "{title} has {size} bytes although its server had announced "
                      "{announced}; should it end early, remove it and get it again."),
    QT_TRANSLATE_NOOP("Sentence",
                      "{title} has {size} although its server had announced "
                      "{announced}; should it end early, remove it and get it again."),
    QT_TRANSLATE_NOOP("Sentence",
                      "{title} has {size} bytes although its server had announced "
                      "{announced}; it is kept as it came."),
    QT_TRANSLATE_NOOP("Sentence",
                      "{title} has {size} although its server had announced "
                      "{announced}; it is kept as it came."),
    QT_TRANSLATE_NOOP("Sentence", "No player could be started for {title}."),
    QT_TRANSLATE_NOOP("Sentence",
                      "Removed: {title}; its film {place} could not be deleted ({words})."),

    // An operation.
    QT_TRANSLATE_NOOP("Sentence", "The item could not be removed."),
    QT_TRANSLATE_NOOP("Sentence", "Only a failed item can be retried; this one is {state}."),
    QT_TRANSLATE_NOOP("Sentence", "Only what waits or arrives can be paused; this one is {state}."),
    QT_TRANSLATE_NOOP("Sentence", "Only a paused item can be resumed; this one is {state}."),
    QT_TRANSLATE_NOOP("Sentence", "paused"),
    QT_TRANSLATE_NOOP("Sentence", "queued"),
    QT_TRANSLATE_NOOP("Sentence", "starting"),
    QT_TRANSLATE_NOOP("Sentence", "downloading"),
    QT_TRANSLATE_NOOP("Sentence", "completed"),
    QT_TRANSLATE_NOOP("Sentence", "stopped"),
    QT_TRANSLATE_NOOP("Sentence", "failed"),
    QT_TRANSLATE_NOOP("Sentence", "held"),
    QT_TRANSLATE_NOOP("Sentence", "A failed item cannot be moved before it is tried again."),
    QT_TRANSLATE_NOOP("Sentence", "The item cannot move any further."),
    QT_TRANSLATE_NOOP("Sentence", "The item cannot move that far."),
    QT_TRANSLATE_NOOP("Sentence", "The request was not understood."),

    // The queue and its files.
    QT_TRANSLATE_NOOP("Sentence", "The queue could not be read; it was set aside as {place}."),
    QT_TRANSLATE_NOOP("Sentence",
                      "The queue file {place} is {words}; nothing was changed. Move it "
                      "away, or choose another folder with --data."),
    QT_TRANSLATE_NOOP("Sentence", "a folder"),
    QT_TRANSLATE_NOOP("Sentence", "not a file but a pipe or a device"),
    QT_TRANSLATE_NOOP("Sentence", "a link that leads nowhere"),
    QT_TRANSLATE_NOOP("Sentence",
                      "The queue file {place} cannot be read ({words}); nothing was changed. Try "
                      "again, make it readable, or choose another folder with --data."),
    QT_TRANSLATE_NOOP("Sentence",
                      "What belongs into {place} is forgotten at the end of this run: it is "
                      "{words}. Move that away."),
    QT_TRANSLATE_NOOP("Sentence",
                      "The queue file {place} could not be read a moment ago; nothing "
                      "was changed. Try again."),
    QT_TRANSLATE_NOOP("Sentence",
                      "The queue file {place} cannot be written ({words}); free some space or make "
                      "it writable, or choose another folder with --data."),
    QT_TRANSLATE_NOOP("Sentence", "writing failed"),
    QT_TRANSLATE_NOOP("Sentence",
                      "The data folder {place} cannot be written ({words}); choose "
                      "another with --data."),
    QT_TRANSLATE_NOOP("Sentence",
                      "Only {files} files may be open at once, and {needed} are needed; raise the "
                      "limit (ulimit -n) and try again."),
    QT_TRANSLATE_NOOP("Sentence",
                      "The system lets no more threads be started; end other programs "
                      "or raise the limit (ulimit -u), and try again."),

    // Another process.
    QT_TRANSLATE_NOOP("Sentence",
                      "Another player is using the data folder {place}; close it, or "
                      "choose another folder with --data."),
    QT_TRANSLATE_NOOP("Sentence", "The player that held the queue has ended."),
    QT_TRANSLATE_NOOP("Sentence",
                      "The player that holds the queue talks with as many others as it "
                      "can; try again later."),
    QT_TRANSLATE_NOOP("Sentence",
                      "This is more than the player that holds the queue takes at once; give "
                      "fewer addresses at a time."),
    QT_TRANSLATE_NOOP("Sentence",
                      "What the player that holds the queue says is not understood; "
                      "close it, then try again."),
    QT_TRANSLATE_NOOP("Sentence",
                      "The player that holds the queue does not answer; it may be "
                      "stopped: continue or close it."),
    QT_TRANSLATE_NOOP("Sentence",
                      "The queue is held by another version of the player ({version}, process "
                      "{number}); close it, or use that version."),
    QT_TRANSLATE_NOOP("Sentence", "{words} Other players cannot reach this queue."),
    QT_TRANSLATE_NOOP("Sentence", "There is no place for the socket of the queue."),
    QT_TRANSLATE_NOOP("Sentence", "No thread can be started for the socket of the queue."),
    QT_TRANSLATE_NOOP("Sentence", "The socket {place} cannot be opened ({words})."),
    QT_TRANSLATE_NOOP("Sentence", "a folder lies there"),

    // The plug-ins.
    QT_TRANSLATE_NOOP("Sentence", "The download manager cannot be loaded from {place}. {words}"),
    QT_TRANSLATE_NOOP("Sentence", "The download manager cannot be loaded from {place}."),
    QT_TRANSLATE_NOOP("Sentence", "Plug-in description {place}: {words}"),
    QT_TRANSLATE_NOOP("Sentence", "Plug-in {name}: It cannot be loaded: {words}."),
    QT_TRANSLATE_NOOP("Sentence", "unknown reason"),
    QT_TRANSLATE_NOOP("Sentence", "It cannot be read: {words}."),
    QT_TRANSLATE_NOOP("Sentence", "It is too large for a description."),
    QT_TRANSLATE_NOOP("Sentence", "It has no \"id\"."),
    QT_TRANSLATE_NOOP("Sentence", "Its \"version\" is not made of numbers joined by dots."),
    QT_TRANSLATE_NOOP("Sentence", "Its \"interfaces\" are not a list of texts."),
    QT_TRANSLATE_NOOP("Sentence", "It has no \"library\"."),
    QT_TRANSLATE_NOOP("Sentence", "It is not JSON: {words} at byte {number}."),
    QT_TRANSLATE_NOOP("Sentence", "It is not a JSON object."),
    QT_TRANSLATE_NOOP("Sentence",
                      "Plug-in {name}: Its getPlugin made no plug-in (result {number})."),
    QT_TRANSLATE_NOOP("Sentence", "Plug-in {name}: Its getPlugin failed: {words}."),
    QT_TRANSLATE_NOOP("Sentence", "Plug-in {name}: Its getPlugin failed."),
};

const QRegularExpression& nameOfFact() {
  static const QRegularExpression kName(QStringLiteral("\\{([a-z]+)\\}"));
  return kName;
}

/// Finds the facts in a sentence of this form, each under its name. A detail stands in brackets.
QRegularExpressionMatch factsIn(const QString& sentence, const QString& form) {
  QString pattern;
  qsizetype end = 0;
  for (auto name = nameOfFact().globalMatch(form); name.hasNext();) {
    const QRegularExpressionMatch match = name.next();
    pattern += QRegularExpression::escape(form.sliced(end, match.capturedStart() - end));
    const bool isDetail = match.captured(1) == u"detail";
    pattern += isDetail ? QStringLiteral("(?<detail>(?: \\(.*\\))?)")
                        : QStringLiteral("(?<%1>.*?)").arg(match.captured(1));
    end = match.capturedEnd();
  }
  pattern =
      QRegularExpression::anchoredPattern(pattern + QRegularExpression::escape(form.sliced(end)));
  return QRegularExpression(pattern, QRegularExpression::DotMatchesEverythingOption)
      .match(sentence);
}

QString translated(const QString& words);

/// Words inside a sentence may be a sentence themselves, but not a title or a path.
QString translatedFact(const QString& name, const QString& fact) {
  if (name == u"words" || name == u"state") return translated(fact);
  if (name != u"detail" || fact.isEmpty()) return fact;
  return QStringLiteral(" (%1)").arg(translated(fact.sliced(2, fact.size() - 3)));
}

QString filled(const QString& form, const QRegularExpressionMatch& facts) {
  QString text;
  qsizetype end = 0;
  for (auto name = nameOfFact().globalMatch(form); name.hasNext();) {
    const QRegularExpressionMatch match = name.next();
    const QString fact = match.captured(1);
    text += form.sliced(end, match.capturedStart() - end);
    text += translatedFact(fact, facts.captured(fact));
    end = match.capturedEnd();
  }
  return text + form.sliced(end);
}

/// The sentence in the language of the user; nullopt when it is not of this form, or when the form
/// is not translated.
std::optional<QString> translatedAs(const char* context, const std::string& english,
                                    const QString& sentence) {
  const QString form = QString::fromStdString(english);
  if (!sentence.startsWith(QStringView(form).left(form.indexOf(u'{')))) return std::nullopt;
  const QString own = QCoreApplication::translate(context, english.c_str());
  if (own == form) return std::nullopt;
  const QRegularExpressionMatch facts = factsIn(sentence, form);
  return facts.hasMatch() ? std::optional(filled(own, facts)) : std::nullopt;
}

QString translated(const QString& words) {
  for (const char* const form : kForms) {
    if (const auto text = translatedAs("Sentence", form, words)) return *text;
  }
  for (const std::string& form : reasons::sentenceForms()) {
    // What begins with any words would swallow every sentence.
    if (form.starts_with("{words}")) continue;
    if (const auto text = translatedAs("Reason", form, words)) return *text;
  }
  return words;
}

}  // namespace

QString queueSentence(const std::string& english) {
  return translated(QString::fromStdString(english));
}

/// A reason from another process or an earlier run carries its facts only inside its English
/// sentence.
QString reasonSentence(const reasons::Explanation& reason) {
  const QString english = QString::fromStdString(reason.happened);
  const auto own = translatedAs("Reason", reasons::sentenceForm(reason.reason), english);
  const QString text = own ? *own : translated(english);
  const bool takesAdvice = !text.endsWith(QLatin1Char('.')) && isAdviceForWindow(reason.advice);
  const QString advice =
      takesAdvice ? QCoreApplication::translate("Reason", reason.advice.c_str()) : QString();
  if (!advice.isEmpty()) return text + QStringLiteral("; ") + advice + QLatin1Char('.');
  return text.endsWith(QLatin1Char('.')) ? text : text + QLatin1Char('.');
}

bool isAdviceForWindow(const std::string& advice) {
  const bool namesOption =
      advice.find("--") != std::string::npos || advice.find(" -o") != std::string::npos;
  const bool namesCommand = advice.find('`') != std::string::npos;
  return !advice.empty() && !namesOption && !namesCommand;
}

}  // namespace playerx::window
