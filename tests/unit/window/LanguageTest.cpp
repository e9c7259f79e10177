#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <algorithm>

#include "playerx/window/actions/ActionSet.h"
#include "playerx/window/dialogs/AddAddressesDialog.h"
#include "playerx/window/model/FilmText.h"
#include "playerx/window/model/Sentences.h"
#include "playerx/window/shell/Language.h"
#include "tests/support/Process.h"
#include "tests/unit/window/Mnemonics.h"

namespace playerx::window {
namespace {

struct Message {
  QString source;
  QStringList translations;
  bool isUnfinished = false;
};

const QString kTranslations = QStringLiteral(TRANSLATIONS "/");

QList<Message> messagesOf(const QString& name, const QString& folder = kTranslations) {
  QFile file(folder + name);
  EXPECT_TRUE(file.open(QIODevice::ReadOnly));
  QXmlStreamReader reader(&file);
  QList<Message> messages;
  while (!reader.atEnd()) {
    if (reader.readNext() != QXmlStreamReader::StartElement) continue;
    if (reader.name() == u"message") messages.append(Message());
    if (reader.name() == u"source") messages.last().source = reader.readElementText();
    if (reader.name() == u"numerusform") messages.last().translations << reader.readElementText();
    if (reader.name() != u"translation") continue;
    messages.last().isUnfinished = reader.attributes().hasAttribute(QStringLiteral("type"));
    if (messages.last().source.contains(QStringLiteral("%n"))) continue;
    messages.last().translations << reader.readElementText();
  }
  return messages;
}

QStringList placesIn(const QString& text) {
  QStringList places;
  static const QRegularExpression kPlace(QStringLiteral("%[1-9n](?!\\d)|\\{[a-z]+\\}"));
  for (auto match = kPlace.globalMatch(text); match.hasNext();) places << match.next().captured();
  places.sort();
  places.removeDuplicates();
  return places;
}

TEST(LanguageTest, EveryTextIsTranslatedWithThePlacesOfItsSource) {
  for (const char* const name : {"playerx_de.ts", "playerx_en.ts", "reasons_de.ts"}) {
    const QList<Message> messages = messagesOf(QString::fromLatin1(name));
    EXPECT_GT(messages.size(), 8);
    for (const Message& message : messages) {
      const std::string source = message.source.toStdString();
      EXPECT_FALSE(message.isUnfinished) << source;
      ASSERT_FALSE(message.translations.isEmpty()) << source;
      for (const QString& translation : message.translations) {
        EXPECT_FALSE(translation.isEmpty()) << source;
        EXPECT_EQ(placesIn(translation), placesIn(message.source)) << source;
      }
    }
  }
}

TEST(LanguageTest, EveryTextOfTheSourcesIsInTheTranslation) {
  const QTemporaryDir folder;
  const QString name = QStringLiteral("playerx_de.ts");
  const QString copy = folder.filePath(name);
  ASSERT_TRUE(QFile::copy(kTranslations + name, copy));
  const QString root = kTranslations + QStringLiteral("../../..");
  support::Process lupdate({LUPDATE, "-silent", "-locations", "none", "-I", root.toStdString(),
                            (kTranslations + "..").toStdString(), "-ts", copy.toStdString()});
  ASSERT_EQ(lupdate.wait(), 0) << lupdate.errors();
  const QList<Message> messages = messagesOf(copy, {});
  EXPECT_EQ(messages.size(), messagesOf(name).size()) << "run " TRANSLATIONS "/update";
  for (const Message& message : messages) {
    EXPECT_FALSE(message.isUnfinished) << message.source.toStdString();
  }
}

TEST(LanguageTest, EveryReasonIsTranslatedAndNothingElse) {
  QSet<QString> translated = {QStringLiteral("{words}")};  // those of the online services
  for (const Message& message : messagesOf(QStringLiteral("reasons_de.ts")))
    translated.insert(message.source);
  QSet<QString> forms;
  for (const std::string& form : reasons::sentenceForms()) forms << QString::fromStdString(form);
  for (const std::string& advice : reasons::adviceForms()) {
    if (isAdviceForWindow(advice)) forms << QString::fromStdString(advice);
  }
  EXPECT_EQ(translated, forms);
}

bool isOfTheCommandLine(const QFileInfo& source) {
  static const QStringList kNames = {QStringLiteral("FilmAdder.cpp"), QStringLiteral("Places.cpp"),
                                     QStringLiteral("OptionFault.cpp")};
  return kNames.contains(source.fileName());
}

/// Whether what stands here answers the command line: the window shows what has failed.
bool isAnswer(const QString& text, qsizetype place) {
  static const QRegularExpression kEnd(QStringLiteral("[;{}]\\s*\\n"));
  static const QRegularExpression kAnswer(QStringLiteral("\\bdone\\(|notes\\.push_back"));
  const QString before = text.left(place);
  return before.sliced(std::max<qsizetype>(before.lastIndexOf(kEnd), 0)).contains(kAnswer);
}

/// What the rooms say besides reasons, as pieces between the facts: literals of several words.
QStringList sentencePiecesOf(const QString& folder) {
  static const QRegularExpression kLiteral(QStringLiteral(
      R"re("(?:\\.|[^"\\])*"(?:\s*"(?:\\.|[^"\\])*")*|//[^\n]*|'(?:\\.|[^'\\])')re"));
  static const QRegularExpression kSeam(QStringLiteral(R"re("\s*"|^"|"$)re"));
  static const QRegularExpression kWords(QStringLiteral("[a-z]{2} [a-z]"));
  QStringList pieces;
  for (const QFileInfo& source : QDir(folder).entryInfoList({QStringLiteral("*.cpp")})) {
    if (isOfTheCommandLine(source)) continue;
    QFile file(source.filePath());
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(file.readAll());
    for (auto match = kLiteral.globalMatch(text); match.hasNext();) {
      const QRegularExpressionMatch found = match.next();
      const QString literal = found.captured();
      const bool isPiece = literal.startsWith(u'"') && literal.contains(kWords);
      if (!isPiece || isAnswer(text, found.capturedStart())) continue;
      pieces << QString(literal).remove(kSeam).replace(QStringLiteral("\\\""),
                                                       QStringLiteral("\""));
    }
  }
  return pieces;
}

/// Said on the command line alone, or before there is a window.
bool isNotShown(const QString& piece) {
  static const QRegularExpression kPieces(QStringLiteral(
      "`get`|`pause N`|--limit-rate|^The request |left of |There is no item|the queue holds|"
      "not in the queue any more|has no window|cannot be copied|does not hold the last|"
      "run the command again|^Protected: |%llu|Shutdown failed|still held|^; the queue is paused"));
  return piece.contains(kPieces);
}

TEST(LanguageTest, EverySentenceOfTheQueueIsTranslated) {
  QString translated;
  for (const Message& message : messagesOf("playerx_de.ts")) translated += message.source + u'\n';
  const QString player = QStringLiteral(TRANSLATIONS "/../../");
  int count = 0;
  for (const char* const room :
       {"app/door", "app/inputs", "app/model", "app/session", "framework", "services"}) {
    for (const QString& piece : sentencePiecesOf(player + QString::fromLatin1(room))) {
      ++count;
      EXPECT_TRUE(isNotShown(piece) || translated.contains(piece))
          << room << ": " << piece.toStdString();
    }
  }
  EXPECT_GT(count, 50);
}

TEST(LanguageTest, ASentenceOfTheQueueIsSaidInTheLanguageOfTheUserWithItsFacts) {
  const std::string english =
      "The queue file /q is a folder; nothing was changed. Move it away, or "
      "choose another folder with --data.";
  EXPECT_EQ(queueSentence(english), QString::fromStdString(english));
  const Language german{QLocale(QLocale::German)};
  EXPECT_EQ(
      queueSentence(english),
      QStringLiteral("Die Datei der Warteschlange /q ist ein Ordner; nichts wurde geändert. Sie "
                     "wegräumen oder mit --data einen anderen Ordner wählen."));
  EXPECT_EQ(queueSentence("Said by a later version."), QStringLiteral("Said by a later version."));
}

TEST(LanguageTest, ASentenceInsideAReasonIsTranslatedToo) {
  const Language german{QLocale(QLocale::German)};
  const reasons::Explanation refused = reasons::explain(
      reasons::Reason::kServicesSaid, {.words = "The online services cannot read this ticket."});
  EXPECT_EQ(reasonSentence(refused),
            QStringLiteral("Die Online-Dienste können dieses Ticket nicht lesen."));
  const reasons::Explanation full = reasons::explain(
      reasons::Reason::kTooLittleSpace, {.place = "/films", .words = "1.2 GB needed, 0.4 GB free"});
  EXPECT_TRUE(reasonSentence(full).contains(QStringLiteral("(1.2 GB nötig, 0.4 GB frei)")))
      << reasonSentence(full).toStdString();
}

TEST(LanguageTest, AReasonIsSaidInTheLanguageOfTheUserWithItsFacts) {
  const reasons::Explanation missing =
      reasons::explain(reasons::reasonOfStatus(404), {.host = "films.example"});
  const reasons::Explanation strange = {reasons::reasonOfStatus(404), "Said by a later version"};
  EXPECT_EQ(reasonSentence(missing),
            QStringLiteral("films.example has no film at this address (404); check the address."));
  const Language german{QLocale(QLocale::German)};
  EXPECT_EQ(reasonSentence(missing),
            QStringLiteral("Auf films.example gibt es unter dieser Adresse keinen Film (404); die "
                           "Adresse prüfen."));
  EXPECT_EQ(reasonSentence(strange), QStringLiteral("Said by a later version."));
}

TEST(LanguageTest, TheWordsInBracketsOfAReasonStayWhereTheyAre) {
  const Language german{QLocale(QLocale::German)};
  const reasons::Reason network = reasons::reasonOf(TransferFailure::kNetwork);
  EXPECT_EQ(reasonSentence(reasons::explain(network, {.host = "a.example", .words = "no (route)"})),
            QStringLiteral("a.example war nicht erreichbar (no (route)); die Netzwerkverbindung "
                           "prüfen und es später noch einmal versuchen."));
  EXPECT_EQ(reasonSentence(reasons::explain(network, {.host = "a.example"})),
            QStringLiteral("a.example war nicht erreichbar; die Netzwerkverbindung prüfen und es "
                           "später noch einmal versuchen."));
}

TEST(LanguageTest, AdviceOnOptionsIsForTheCommandLineAlone) {
  const reasons::Explanation full = reasons::explain(reasons::reasonOf(TransferFailure::kNoSpace));
  EXPECT_EQ(reasonSentence(full),
            QStringLiteral("The disk with the folder for unfinished films is full."));
}

TEST(LanguageTest, WordsThatEndWithAFullStopGetNoSecondOne) {
  EXPECT_EQ(reasonSentence(reasons::explain(reasons::Reason::kServicesSaid, {.words = "Not now."})),
            QStringLiteral("Not now."));
}

TEST(LanguageTest, PluralsFollowTheNumber) {
  const auto summary = [](int count) {
    PastedInputs pasted;
    for (int i = 0; i < count; ++i) pasted.inputs << QString::number(i);
    return summaryOf(pasted);
  };
  {
    const Language english{QLocale(QLocale::English)};
    EXPECT_EQ(summary(1), QStringLiteral("1 address or ticket found."));
    EXPECT_EQ(summary(2), QStringLiteral("2 addresses or tickets found."));
  }
  const Language german{QLocale(QLocale::German)};
  EXPECT_EQ(summary(1), QStringLiteral("1 Adresse oder Ticket gefunden."));
  EXPECT_EQ(summary(2), QStringLiteral("2 Adressen oder Tickets gefunden."));
}

TEST(LanguageTest, ALanguageWithoutTranslationIsEnglish) {
  const Language icelandic{QLocale(QLocale::Icelandic)};
  EXPECT_EQ(stateWord(FilmState::kWaiting), QStringLiteral("Waiting"));
}

TEST(LanguageTest, NoGermanMenuHasAMnemonicTwice) {
  const Language german{QLocale(QLocale::German)};
  ActionSet actions;
  expectDistinctMnemonics(actions);
}

}  // namespace
}  // namespace playerx::window
