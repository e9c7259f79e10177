#pragma once

#include <QObject>
#include <QStringList>
#include <QTimer>

#include "playerx/window/model/Film.h"
#include "playerx/window/model/WindowPreferences.h"

namespace playerx::window {

class Desktop;
class FilmNews;
struct QueueTotals;

/// Decides what the desktop hears: a notification when films are done or have failed, several
/// within a moment as one; awake while bytes move; progress while films arrive. Used on the UI
/// thread; the arguments are not owned and outlive this.
class DesktopNews : public QObject {
  Q_OBJECT

 public:
  /// Films that end within this time are told of together.
  static constexpr int kGatherMs = 1500;

  DesktopNews(const FilmNews& news, Desktop& desktop, QObject* parent = nullptr);

  void setPreferences(const WindowPreferences& preferences) { preferences_ = preferences; }

  /// Whether the user looks at the window: then nothing has to be told.
  void setSeen(bool isSeen) { isSeen_ = isSeen; }

  void follow(const QueueTotals& totals);

  /// Tells what was gathered now.
  void tell();

 private:
  void gather(QStringList& titles, bool isWanted, const Film& film);

  Desktop& desktop_;
  WindowPreferences preferences_;
  bool isSeen_ = false;
  bool isAwake_ = false;
  int percent_ = -1;
  QStringList done_;
  QStringList failed_;
  QTimer pause_;
};

/// The words of a notification on films that are done, or have failed.
QString doneText(const QStringList& titles);
QString failedText(const QStringList& titles);

}  // namespace playerx::window
