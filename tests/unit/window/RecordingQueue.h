#pragma once

#include <QStringList>

#include "playerx/window/queue/WindowQueue.h"

namespace playerx::window {

/// A queue that does nothing but write down what it is asked to do, as one line each.
class RecordingQueue : public WindowQueue {
 public:
  void add(const QStringList& inputs) override { note("add", inputs.join(u' ')); }
  void readTicket(const QString& path) override { note("readTicket", path); }
  void pauseAll() override { note("pauseAll"); }
  void resumeAll() override { note("resumeAll"); }
  void stop(const Ids& ids) override { note("stop", text(ids)); }
  void goOn(const Ids& ids) override { note("goOn", text(ids)); }
  void retry(const Ids& ids) override { note("retry", text(ids)); }
  void remove(const Ids& ids, bool withFiles) override {
    note(withFiles ? "removeWithFiles" : "remove", text(ids));
  }
  void move(const Ids& ids, Move where) override {
    static const char* const kWords[] = {"moveUp", "moveDown", "moveToTop", "moveToBottom"};
    note(kWords[static_cast<int>(where)], text(ids));
  }
  void moveBefore(const Ids& ids, FilmId before) override {
    note("moveBefore", text(ids) + QStringLiteral(" %1").arg(before));
  }
  void play(FilmId id) override { note("play", text({id})); }
  void chooseSlot(int question, int slot) override {
    note("chooseSlot", QStringLiteral("%1 %2").arg(question).arg(slot));
  }
  void setPreferences(const QueuePreferences& preferences) override {
    note("setPreferences", preferences.mediaFolder);
  }

  /// What was asked for since the last call.
  QStringList take() { return std::exchange(calls_, {}); }

 private:
  void note(const char* call, const QString& arguments = {}) {
    calls_ << (QString::fromLatin1(call) + QLatin1Char(' ') + arguments).trimmed();
  }

  static QString text(const Ids& ids) {
    QStringList numbers;
    for (const FilmId id : ids) numbers << QString::number(id);
    return numbers.join(QLatin1Char(' '));
  }

  QStringList calls_;
};

}  // namespace playerx::window
