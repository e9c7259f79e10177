#pragma once

#include <QWidget>

class QStackedWidget;

namespace playerx::window {

class ActionSet;
class EmptyState;
class FilmFilter;
class FilmView;

/// The list of downloads, or what stands in its place while it is empty.
class DownloadsPage : public QWidget {
  Q_OBJECT

 public:
  /// Not owned: `films` and `actions` outlive the page.
  DownloadsPage(FilmFilter& films, ActionSet& actions, QWidget* parent = nullptr);

  FilmView& view() { return *view_; }
  EmptyState& emptyState() { return *empty_; }

 private:
  void showMenu(const QPoint& place);
  void choose();

  FilmFilter& films_;
  const ActionSet& actions_;
  QStackedWidget* const stack_;
  FilmView* const view_;
  EmptyState* const empty_;
};

}  // namespace playerx::window
