#pragma once

#include <QObject>

#include "playerx/window/actions/Situation.h"
#include "playerx/window/queue/QueueMessages.h"

namespace playerx::window {

class FilmFilter;
class FilmModel;
class FilmView;
class MessageStrip;
class PendingRemoval;
class WindowQueue;

/// Carries out what the user wants done with films, and tells what came of it in the strip. Used on
/// the UI thread; the parts are not owned and outlive this.
class FilmCommands : public QObject {
  Q_OBJECT

 public:
  struct Parts {
    WindowQueue& queue;
    FilmModel& films;
    FilmFilter& filter;
    FilmView& view;
    MessageStrip& strip;
  };

  explicit FilmCommands(const Parts& parts, QObject* parent = nullptr);

  /// Does this with the selected films. Returns false for a verb that is not about films.
  bool carryOut(Verb verb);

  /// Does this with these films.
  bool carryOut(Verb verb, const QList<FilmId>& ids);

  /// Queues addresses and tickets; tickets are read before, and doubtful ones asked about.
  void add(const QStringList& inputs);

  void moveBefore(const QList<FilmId>& ids, FilmId before);

  void removeWithFiles(const QList<FilmId>& ids) { remove(ids, true); }

  /// What of a situation depends on films and selection.
  Situation situation(bool isPaused) const;

  /// Says what became of inputs, and selects their films, which are in the list by now.
  void tellInputs(const InputReport& report);

  /// Ends what is still open, such as a removal that could be undone.
  void finish();

 Q_SIGNALS:
  void situationChanged();
  void playWanted(playerx::window::FilmId film);
  void folderWanted(const QString& path);
  void otherFolderWanted();

  /// These films are to be deleted from the disk, which has to be confirmed by `removeWithFiles`.
  /// `title` is that of the only one, or empty.
  void deletionAsked(const QList<playerx::window::FilmId>& films, const QString& title);

 private:
  void tellLeft(int inputs);
  void tellTicket(const TicketReport& report);
  void remove(const QList<FilmId>& ids, bool withFiles);
  void askAboutDeletion(const QList<FilmId>& ids);
  void showInFolder(const QList<FilmId>& ids);
  void copyAddresses(const QList<Film>& films);
  void copyDetails(const QList<Film>& films);
  QList<Film> filmsOf(const QList<FilmId>& ids) const;
  QList<FilmId> idsIf(const QList<FilmId>& ids, bool (*holds)(const Film&)) const;
  QList<FilmId> allIds() const;

  const Parts parts_;
  PendingRemoval* removal_;  // child
};

}  // namespace playerx::window
