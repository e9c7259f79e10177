#pragma once

#include <QObject>

#include "playerx/window/queue/QueueMessages.h"

namespace playerx::window {

class FilmModel;
class MessageStrip;
class WindowQueue;

/// Puts the queue's notices and questions into the strip, in words for people. Used on the UI
/// thread; the arguments are not owned and outlive this.
class QueueQuestions : public QObject {
  Q_OBJECT

 public:
  QueueQuestions(WindowQueue& queue, const FilmModel& films, MessageStrip& strip,
                 QObject* parent = nullptr);

 Q_SIGNALS:
  void otherFolderWanted();

 private:
  void tell(const Notice& notice);
  void tellNoSpace(const Notice& notice);
  void askForSlot(const SlotQuestion& question);
  QString titleOf(FilmId film) const;

  WindowQueue& queue_;
  const FilmModel& films_;
  MessageStrip& strip_;
};

}  // namespace playerx::window
