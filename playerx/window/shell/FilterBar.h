#pragma once

#include <QWidget>

class QComboBox;
class QLineEdit;

namespace playerx::window {

class FilmFilter;

/// Narrows the list of downloads as the user types. Used on the UI thread.
class FilterBar : public QWidget {
  Q_OBJECT

 public:
  /// `films` is not owned and outlives the bar.
  explicit FilterBar(FilmFilter& films, QWidget* parent = nullptr);

  /// Begins to edit the words.
  void edit();

  /// Shows all films.
  void clear();

  int group() const;
  void setGroup(int group);

 Q_SIGNALS:
  void changed();

  /// The user is done with the words and wants the list.
  void left();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void setLook();

  FilmFilter& films_;
  QComboBox* const groups_;
  QLineEdit* const words_;
};

}  // namespace playerx::window
