#pragma once

#include <QAbstractListModel>
#include <QHash>
#include <vector>

#include "playerx/window/model/QueueUpdate.h"

namespace playerx::window {

/// The queue as rows for a view, in the queue's order. Used on the UI thread.
class FilmModel : public QAbstractListModel {
  Q_OBJECT

 public:
  /// Roles beside those of Qt: Qt::DisplayRole is the title, Qt::AccessibleTextRole one sentence
  /// with everything the row shows.
  enum Role {
    kFilmRole = Qt::UserRole,
    kIdRole,
    kNumberRole,  ///< the film's place in the queue, from 1 on
  };

  using QAbstractListModel::QAbstractListModel;

  /// Applies an update, announcing rows that were inserted, removed or moved, and contiguous ranges
  /// of rows that changed.
  void apply(const QueueUpdate& update);

  /// The row of a film; -1 when it is not queued.
  int rowOf(FilmId id) const { return rows_.value(id, -1); }

  /// The film of a row, or with an id; null if absent. Valid until the next `apply`.
  const Film* filmAt(int row) const;
  const Film* film(FilmId id) const { return filmAt(rowOf(id)); }

  const std::vector<Film>& films() const { return films_; }

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  QHash<int, QByteArray> roleNames() const override;
  Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }
  QStringList mimeTypes() const override;
  QMimeData* mimeData(const QModelIndexList& indexes) const override;

 private:
  using Order = QList<FilmId>;
  using Fresh = QHash<FilmId, const Film*>;

  void removeMissing(const Order& order);
  int runsWithout(const QSet<FilmId>& kept) const;
  void putLast(const QSet<FilmId>& kept);
  void insertNew(const Order& order, const Fresh& fresh);
  void arrange(const Order& order);
  void arrangeAtOnce(const Order& order);
  void moveRow(int from, int to);
  void replaceChanged(const Fresh& fresh);
  void reindex(int first, int last);

  std::vector<Film> films_;
  QHash<FilmId, int> rows_;
};

/// Ids of films that are being dragged, as `FilmModel::mimeData` carries them; empty for other
/// data.
QList<FilmId> draggedFilms(const QMimeData& data);

}  // namespace playerx::window
