#include "playerx/window/model/FilmFilter.h"

#include <algorithm>

#include "playerx/window/model/FilmModel.h"
#include "playerx/window/model/FilmText.h"

namespace playerx::window {

namespace {

bool isInGroup(FilmState state, FilmFilter::Group group) {
  switch (group) {
    case FilmFilter::kUnfinished:
      return isUnfinished(state);
    case FilmFilter::kDone:
      return state == FilmState::kDone;
    case FilmFilter::kFailed:
      return state == FilmState::kFailed;
    case FilmFilter::kAll:
      break;
  }
  return true;
}

}  // namespace

FilmFilter::FilmFilter(QObject* parent) : QSortFilterProxyModel(parent) {}

// `invalidate` tells of one new layout; `invalidateFilter` would tell of each film that goes, which
// takes too long when they are thousands.
void FilmFilter::setText(const QString& text) {
  words_ = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
  invalidate();
}

void FilmFilter::setGroup(Group group) {
  group_ = group;
  invalidate();
}

void FilmFilter::setHidden(const QSet<FilmId>& ids) {
  hidden_ = ids;
  invalidate();
}

QModelIndex FilmFilter::indexOf(FilmId id) const {
  const auto* const films = qobject_cast<const FilmModel*>(sourceModel());
  return mapFromSource(films->index(films->rowOf(id)));
}

const Film* FilmFilter::filmAt(const QModelIndex& index) const {
  const auto* const films = qobject_cast<const FilmModel*>(sourceModel());
  const QModelIndex source = mapToSource(index);
  return source.isValid() ? films->filmAt(source.row()) : nullptr;
}

bool FilmFilter::filterAcceptsRow(int row, const QModelIndex&) const {
  const Film* const film = qobject_cast<const FilmModel*>(sourceModel())->filmAt(row);
  return film != nullptr && !hidden_.contains(film->id) && isInGroup(film->state, group_) &&
         holdsEveryWord(*film);
}

bool FilmFilter::holdsEveryWord(const Film& film) const {
  if (words_.isEmpty()) return true;
  const QStringList places = {displayTitle(film), film.provider, film.address,
                              stateWord(film.state)};
  return std::all_of(words_.begin(), words_.end(), [&](const QString& word) {
    return std::any_of(places.begin(), places.end(), [&](const QString& place) {
      return place.contains(word, Qt::CaseInsensitive);
    });
  });
}

}  // namespace playerx::window
