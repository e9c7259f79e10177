#include "playerx/window/view/Icons.h"

#include <QApplication>
#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QSvgRenderer>

/// Resources of a static library have to be asked for, from outside of any namespace.
static void initializeIcons() { Q_INIT_RESOURCE(icons); }

namespace playerx::window {

namespace {

constexpr int kDisabledOpacity = 90;

QString resourceOf(const QString& name) {
  [[maybe_unused]] static const bool isInitialized = (initializeIcons(), true);
  return QStringLiteral(":/icons/%1.svg").arg(name);
}

QColor colorFor(QIcon::Mode mode, const QColor& chosen) {
  const QPalette palette = QApplication::palette();
  if (mode == QIcon::Selected) return palette.color(QPalette::HighlightedText);
  QColor color = chosen.isValid() ? chosen : palette.color(QPalette::WindowText);
  if (mode == QIcon::Disabled) color.setAlpha(kDisabledOpacity);
  return color;
}

/// Draws a one-coloured SVG in a given colour, or in the palette's of the moment.
class TintedIcon : public QIconEngine {
 public:
  TintedIcon(QString name, const QColor& color) : name_(std::move(name)), color_(color) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
    const qreal scale = painter->device()->devicePixelRatioF();
    QPixmap pixmap = rendered((QSizeF(rect.size()) * scale).toSize(), mode);
    pixmap.setDevicePixelRatio(scale);
    painter->drawPixmap(rect, pixmap);
  }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override {
    return rendered(size, mode);
  }

  QIconEngine* clone() const override { return new TintedIcon(*this); }
  bool isNull() override { return !QFile::exists(resourceOf(name_)); }
  QString key() const override { return QStringLiteral("playerx-tinted"); }

 private:
  QPixmap rendered(const QSize& size, QIcon::Mode mode) const {
    const QColor color = colorFor(mode, color_);
    const QString key = QStringLiteral("playerx/%1/%2x%3/%4")
                            .arg(name_)
                            .arg(size.width())
                            .arg(size.height())
                            .arg(color.rgba());
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap)) return pixmap;
    pixmap = QPixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    QSvgRenderer(resourceOf(name_)).render(&painter, QRectF(QPointF(), size));
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), color);
    painter.end();
    QPixmapCache::insert(key, pixmap);
    return pixmap;
  }

  QString name_;
  QColor color_;
};

}  // namespace

QIcon ownIcon(const QString& name, const QColor& color) {
  return QIcon(new TintedIcon(name, color));
}

QIcon themedIcon(const QString& name) { return QIcon::fromTheme(name, ownIcon(name)); }

QIcon applicationIcon() {
  return QIcon::fromTheme(QStringLiteral("playerx"), QIcon(resourceOf(QStringLiteral("playerx"))));
}

}  // namespace playerx::window
