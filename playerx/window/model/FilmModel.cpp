#include "playerx/window/model/FilmModel.h"

#include <QMimeData>
#include <QSet>
#include <QUrl>
#include <algorithm>

#include "playerx/window/model/FilmText.h"

namespace playerx::window {

namespace {

constexpr char kDraggedFilms[] = "application/x-playerx-films";

/// From so many changes of the order on a view is better told of a new layout than of each.
constexpr int kManyMoves = 64;

}  // namespace

void FilmModel::apply(const QueueUpdate& update) {
  Fresh fresh;
  fresh.reserve(update.films.size());
  for (const Film& film : update.films) fresh.insert(film.id, &film);
  if (update.order) {
    removeMissing(*update.order);
    insertNew(*update.order, fresh);
    arrange(*update.order);
  }
  replaceChanged(fresh);
}

const Film* FilmModel::filmAt(int row) const {
  const bool isRow = row >= 0 && row < static_cast<int>(films_.size());
  return isRow ? &films_[static_cast<std::size_t>(row)] : nullptr;
}

int FilmModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(films_.size());
}

QVariant FilmModel::data(const QModelIndex& index, int role) const {
  const Film* const film = index.isValid() ? filmAt(index.row()) : nullptr;
  if (film == nullptr) return {};
  switch (role) {
    case Qt::DisplayRole:
      return displayTitle(*film);
    case Qt::AccessibleTextRole:
      return accessibleText(*film);
    case Qt::ToolTipRole:
      return toolTipText(*film);
    case kFilmRole:
      return QVariant::fromValue(*film);
    case kIdRole:
      return film->id;
    case kNumberRole:
      return index.row() + 1;
    default:
      return {};
  }
}

Qt::ItemFlags FilmModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::ItemIsDropEnabled;
  return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled |
         Qt::ItemNeverHasChildren;
}

QHash<int, QByteArray> FilmModel::roleNames() const {
  QHash<int, QByteArray> names = QAbstractListModel::roleNames();
  names.insert(kFilmRole, "film");
  names.insert(kIdRole, "filmId");
  names.insert(kNumberRole, "number");
  return names;
}

QStringList FilmModel::mimeTypes() const { return {kDraggedFilms}; }

QMimeData* FilmModel::mimeData(const QModelIndexList& indexes) const {
  QByteArrayList ids;
  QList<QUrl> files;
  for (const QModelIndex& index : indexes) {
    const Film* const film = filmAt(index.row());
    if (film == nullptr) continue;
    ids.append(QByteArray::number(film->id));
    if (film->state == FilmState::kDone) files.append(QUrl::fromLocalFile(film->path));
  }
  auto* const data = new QMimeData;
  data->setData(kDraggedFilms, ids.join(' '));
  if (!files.isEmpty()) data->setUrls(files);
  return data;
}

void FilmModel::removeMissing(const Order& order) {
  const QSet<FilmId> kept(order.begin(), order.end());
  if (runsWithout(kept) > kManyMoves) putLast(kept);
  for (int last = rowCount() - 1; last >= 0; --last) {
    if (kept.contains(films_[static_cast<std::size_t>(last)].id)) continue;
    int first = last;
    while (first > 0 && !kept.contains(films_[static_cast<std::size_t>(first - 1)].id)) --first;
    beginRemoveRows({}, first, last);
    for (int row = first; row <= last; ++row) {
      rows_.remove(films_[static_cast<std::size_t>(row)].id);
    }
    films_.erase(films_.begin() + first, films_.begin() + last + 1);
    reindex(first, rowCount());
    endRemoveRows();
    last = first;
  }
}

/// How many runs of films are not among the kept ones.
int FilmModel::runsWithout(const QSet<FilmId>& kept) const {
  int runs = 0;
  bool wasKept = true;
  for (const Film& film : films_) {
    const bool isKept = kept.contains(film.id);
    if (wasKept && !isKept) ++runs;
    wasKept = isKept;
  }
  return runs;
}

/// Moves the films that are not kept behind the others, where they are a single run.
void FilmModel::putLast(const QSet<FilmId>& kept) {
  Order order, others;
  for (const Film& film : films_) (kept.contains(film.id) ? order : others).append(film.id);
  arrangeAtOnce(order + others);
}

/// Puts each run of new films behind the film that precedes it in the new order.
void FilmModel::insertNew(const Order& order, const Fresh& fresh) {
  int row = 0;
  for (qsizetype i = 0; i < order.size(); ++i) {
    const int known = rowOf(order[i]);
    if (known >= 0) {
      row = known + 1;
      continue;
    }
    std::vector<Film> run;
    for (; i < order.size() && rowOf(order[i]) < 0; ++i) {
      if (const Film* const film = fresh.value(order[i])) run.push_back(*film);
    }
    --i;
    if (run.empty()) continue;
    beginInsertRows({}, row, row + static_cast<int>(run.size()) - 1);
    films_.insert(films_.begin() + row, run.begin(), run.end());
    reindex(row, rowCount());
    endInsertRows();
    row += static_cast<int>(run.size());
  }
}

void FilmModel::arrange(const Order& order) {
  Order wanted;
  wanted.reserve(order.size());
  for (const FilmId id : order) {
    if (rowOf(id) >= 0) wanted.append(id);
  }
  QHash<FilmId, int> places;
  for (qsizetype i = 0; i < wanted.size(); ++i) places.insert(wanted[i], static_cast<int>(i));

  int moves = 0;
  for (int row = 0; row < static_cast<int>(wanted.size());) {
    const FilmId here = films_[static_cast<std::size_t>(row)].id;
    if (here == wanted[row]) {
      ++row;
      continue;
    }
    if (++moves > kManyMoves) return arrangeAtOnce(wanted);
    // When the film that belongs here is the next one, this one has moved down; otherwise the one
    // that belongs here has moved up.
    const Film* const next = filmAt(row + 1);
    if (next != nullptr && next->id == wanted[row]) {
      moveRow(row, places.value(here));
    } else {
      moveRow(rowOf(wanted[row]), row);
    }
  }
}

void FilmModel::arrangeAtOnce(const Order& order) {
  Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
  const QModelIndexList before = persistentIndexList();
  QList<FilmId> ids;
  for (const QModelIndex& index : before) ids.append(filmAt(index.row())->id);
  std::vector<Film> films;
  films.reserve(films_.size());
  for (const FilmId id : order)
    films.push_back(std::move(films_[static_cast<std::size_t>(rowOf(id))]));
  films_ = std::move(films);
  reindex(0, rowCount());
  QModelIndexList after;
  for (const FilmId id : ids) after.append(index(rowOf(id)));
  changePersistentIndexList(before, after);
  Q_EMIT layoutChanged({}, VerticalSortHint);
}

void FilmModel::moveRow(int from, int to) {
  if (!beginMoveRows({}, from, from, {}, to > from ? to + 1 : to)) return;
  const auto begin = films_.begin();
  if (to > from) {
    std::rotate(begin + from, begin + from + 1, begin + to + 1);
  } else {
    std::rotate(begin + to, begin + from, begin + from + 1);
  }
  reindex(std::min(from, to), std::max(from, to) + 1);
  endMoveRows();
}

void FilmModel::replaceChanged(const Fresh& fresh) {
  std::vector<int> changed;
  for (const Film* const film : fresh) {
    const int row = rowOf(film->id);
    if (row < 0 || films_[static_cast<std::size_t>(row)] == *film) continue;
    films_[static_cast<std::size_t>(row)] = *film;
    changed.push_back(row);
  }
  std::sort(changed.begin(), changed.end());
  for (std::size_t i = 0; i < changed.size();) {
    std::size_t end = i + 1;
    while (end < changed.size() && changed[end] == changed[end - 1] + 1) ++end;
    Q_EMIT dataChanged(index(changed[i]), index(changed[end - 1]));
    i = end;
  }
}

void FilmModel::reindex(int first, int last) {
  for (int i = first; i < last; ++i) rows_.insert(films_[static_cast<std::size_t>(i)].id, i);
}

QList<FilmId> draggedFilms(const QMimeData& data) {
  QList<FilmId> ids;
  for (const QByteArray& id : data.data(kDraggedFilms).split(' ')) {
    if (const FilmId number = id.toUInt()) ids.append(number);
  }
  return ids;
}

}  // namespace playerx::window
