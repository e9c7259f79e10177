#pragma once

#include <QSlider>

namespace playerx::window {

/// The place in a film, with what has arrived of it in a second tone. The user cannot go further
/// than that. Its values are thousandths of the film.
class SeekBar : public QSlider {
  Q_OBJECT

 public:
  static constexpr int kWhole = 1000;

  explicit SeekBar(QWidget* parent = nullptr);

  /// 0..1
  void setArrived(double part);

  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 Q_SIGNALS:
  /// The user wants to go to this place, 0..1.
  void chosen(double part);

 private:
  int valueAt(int x) const;
  void choose(int value);
  QRect groove() const;

  double arrived_ = 1;
};

}  // namespace playerx::window
