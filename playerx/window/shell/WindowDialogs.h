#pragma once

#include <QObject>

#include "playerx/window/model/WindowPreferences.h"
#include "playerx/window/queue/QueueMessages.h"

class QWidget;

namespace playerx::window {

/// The window's few dialogs. None stops the event loop of the window: the answer arrives with a
/// signal. Used on the UI thread.
class WindowDialogs : public QObject {
  Q_OBJECT

 public:
  /// Dialogs belong to `window`.
  explicit WindowDialogs(QWidget& window);

  void askForAddresses();
  void askForTickets();
  void askForPreferences(const QueuePreferences& queue, const WindowPreferences& window);

  /// `title` is that of a single film; empty for several.
  void askAboutDeletion(const QList<FilmId>& films, const QString& title);

  /// What closing the window is to mean. `canStay` when the window can be had back.
  void askAboutClosing(bool canStay);

  void tellAbout();

 Q_SIGNALS:
  void inputsGiven(const QStringList& inputs);
  void preferencesGiven(const playerx::window::QueuePreferences& queue,
                        const playerx::window::WindowPreferences& window);
  void deletionConfirmed(const QList<playerx::window::FilmId>& films);

  /// `isRemembered` when the user does not want to be asked again.
  void closingChosen(playerx::window::WindowPreferences::Closing closing, bool isRemembered);

 private:
  QWidget& window_;
};

}  // namespace playerx::window
