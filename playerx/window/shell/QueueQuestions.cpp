#include "playerx/window/shell/QueueQuestions.h"

#include "playerx/window/model/FilmModel.h"
#include "playerx/window/model/FilmText.h"
#include "playerx/window/queue/WindowQueue.h"
#include "playerx/window/view/MessageStrip.h"

namespace playerx::window {

namespace {

constexpr int kNoticeMs = 12'000;

}  // namespace

QueueQuestions::QueueQuestions(WindowQueue& queue, const FilmModel& films, MessageStrip& strip,
                               QObject* parent)
    : QObject(parent), queue_(queue), films_(films), strip_(strip) {
  connect(&queue_, &WindowQueue::noticed, this, &QueueQuestions::tell);
  connect(&queue_, &WindowQueue::slotAsked, this, &QueueQuestions::askForSlot);
  connect(&queue_, &WindowQueue::changed, this, [this] { strip_.end(QStringLiteral("lost")); });
  connect(&queue_, &WindowQueue::lost, this, [this](const QString& sentence) {
    strip_.show({.topic = QStringLiteral("lost"), .text = cleanText(sentence), .isWarning = true});
  });
}

void QueueQuestions::tell(const Notice& notice) {
  const QString title = titleOf(notice.film);
  const QString words = cleanText(notice.text);
  StripMessage message;
  message.topic = QStringLiteral("notice:%1:%2").arg(notice.kind).arg(notice.film);
  message.lifetimeMs = kNoticeMs;
  message.isWarning = true;
  switch (notice.kind) {
    case Notice::kNoSpace:
      return tellNoSpace(notice);
    case Notice::kNotAuthorized:
      //: %1 is a film's title, %2 are the words of the online services.
      message.text = tr("The online services do not allow “%1”. %2").arg(title, words);
      break;
    case Notice::kAddressFailed:
      message.text = tr("The address of “%1” could not be fetched.").arg(title);
      break;
    case Notice::kTransferBroken:
      message.text = tr("The transfer of “%1” broke off.").arg(title);
      break;
    case Notice::kServices:
      message.text = words;
      message.isWarning = false;
      break;
  }
  strip_.show(message);
}

void QueueQuestions::tellNoSpace(const Notice& notice) {
  StripMessage message;
  message.topic = QStringLiteral("space");
  message.text = cleanText(notice.text);
  message.isWarning = true;
  message.answers = {{tr("Choose a folder…"), [this] { Q_EMIT otherFolderWanted(); }}};
  const FilmId film = notice.film;
  if (film != 0) {
    message.answers.append({tr("Try again"), [this, film] { queue_.retry({film}); }});
  }
  strip_.show(message);
}

void QueueQuestions::askForSlot(const SlotQuestion& question) {
  StripMessage message;
  message.topic = QStringLiteral("slot:%1").arg(question.number);
  message.text =
      tr("All slots for “%1” are taken. Which one may it have?").arg(cleanText(question.title));
  message.asksNumber = true;
  const int number = question.number;
  message.answers = {
      {tr("Give up this slot"), [this, number] { queue_.chooseSlot(number, strip_.number()); }},
      {tr("None"), [this, number] { queue_.chooseSlot(number, -1); }},
  };
  message.ended = [this, number] { queue_.chooseSlot(number, -1); };
  strip_.show(message);
}

QString QueueQuestions::titleOf(FilmId film) const {
  const Film* const found = films_.film(film);
  return found != nullptr ? displayTitle(*found) : tr("a film");
}

}  // namespace playerx::window
