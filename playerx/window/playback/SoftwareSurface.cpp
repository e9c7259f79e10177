#include "playerx/window/playback/SoftwareSurface.h"

#include <QPaintEvent>
#include <QPainter>
#include <array>

namespace playerx::window {

/// Shows the picture that was drawn last, on black.
class SoftwareSurface::Canvas : public QWidget {
 public:
  explicit Canvas(SoftwareSurface& surface) : surface_(&surface) {
    setAttribute(Qt::WA_OpaquePaintEvent);
  }

  void show(const QImage& image) {
    image_ = image;
    update();
  }

 protected:
  void paintEvent(QPaintEvent* event) override {
    QPainter painter(this);
    if (image_.isNull()) {
      painter.fillRect(event->rect(), Qt::black);
    } else {
      painter.drawImage(rect(), image_);
    }
  }

  void resizeEvent(QResizeEvent* event) override {
    QWidget::resizeEvent(event);
    if (surface_) surface_->render();
  }

 private:
  QPointer<SoftwareSurface> surface_;
  QImage image_;
};

SoftwareSurface::SoftwareSurface(mpv_handle* mpv, QObject* parent)
    : VideoSurface(parent), canvas_(new Canvas(*this)) {
  std::array<mpv_render_param, 2> parameters = {
      {{MPV_RENDER_PARAM_API_TYPE, const_cast<char*>(MPV_RENDER_API_TYPE_SW)},
       {MPV_RENDER_PARAM_INVALID, nullptr}}};
  mpv_render_context* context = nullptr;
  if (mpv_render_context_create(&context, mpv, parameters.data()) < 0) return;
  context_.reset(context);
  mpv_render_context_set_update_callback(context, &SoftwareSurface::updateSoon, this);
}

SoftwareSurface::~SoftwareSurface() {
  release();
  if (canvas_ && canvas_->parent() == nullptr) delete canvas_;
}

QWidget* SoftwareSurface::widget() { return canvas_; }

void SoftwareSurface::release() { context_.reset(); }

/// Called on libmpv's threads, where nothing of libmpv may be used.
void SoftwareSurface::updateSoon(void* surface) {
  QMetaObject::invokeMethod(
      static_cast<SoftwareSurface*>(surface),
      [surface] {
        auto& self = *static_cast<SoftwareSurface*>(surface);
        if (!self.context_) return;
        if (mpv_render_context_update(self.context_.get()) & MPV_RENDER_UPDATE_FRAME) self.render();
      },
      Qt::QueuedConnection);
}

void SoftwareSurface::render() {
  if (!context_ || !canvas_) return;
  const QSize size = (QSizeF(canvas_->size()) * canvas_->devicePixelRatioF()).toSize();
  if (size.isEmpty()) return;
  // Without alpha: libmpv leaves the fourth byte 0.
  QImage image(size, QImage::Format_RGB32);
  std::array<int, 2> extent = {size.width(), size.height()};
  std::size_t stride = static_cast<std::size_t>(image.bytesPerLine());
  int block = 0;
  std::array<mpv_render_param, 6> parameters = {
      {{MPV_RENDER_PARAM_SW_SIZE, extent.data()},
       {MPV_RENDER_PARAM_SW_FORMAT, const_cast<char*>("bgr0")},
       {MPV_RENDER_PARAM_SW_STRIDE, &stride},
       {MPV_RENDER_PARAM_SW_POINTER, image.bits()},
       {MPV_RENDER_PARAM_BLOCK_FOR_TARGET_TIME, &block},
       {MPV_RENDER_PARAM_INVALID, nullptr}}};
  if (mpv_render_context_render(context_.get(), parameters.data()) < 0) return;
  image.setDevicePixelRatio(canvas_->devicePixelRatioF());
  canvas_->show(image);
}

}  // namespace playerx::window
