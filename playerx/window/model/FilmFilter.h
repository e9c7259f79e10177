#pragma once

#include <QSet>
#include <QSortFilterProxyModel>

#include "playerx/window/model/Film.h"

namespace playerx::window {

/// The films of a `FilmModel` that the user wants to see: by words, by state, and without those
/// that are about to be removed. Keeps the queue's order.
class FilmFilter : public QSortFilterProxyModel {
  Q_OBJECT

 public:
  /// Which states are shown.
  enum Group { kAll, kUnfinished, kDone, kFailed };

  explicit FilmFilter(QObject* parent = nullptr);

  /// Shows films that hold every word of `text` in title, provider, address or state.
  void setText(const QString& text);
  void setGroup(Group group);
  void setHidden(const QSet<FilmId>& ids);

  Group group() const { return group_; }

  /// Whether text or group leave films out.
  bool isNarrowed() const { return !words_.isEmpty() || group_ != kAll; }

  QModelIndex indexOf(FilmId id) const;
  const Film* filmAt(const QModelIndex& index) const;

 protected:
  bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

 private:
  bool holdsEveryWord(const Film& film) const;

  QStringList words_;
  Group group_ = kAll;
  QSet<FilmId> hidden_;
};

}  // namespace playerx::window
