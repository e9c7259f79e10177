#include "playerx/window/playback/GlSurface.h"

#include <mpv/render_gl.h>

#include <QOpenGLContext>
#include <QOpenGLWidget>
#include <array>

namespace playerx::window {

class GlSurface::Canvas : public QOpenGLWidget {
 public:
  explicit Canvas(GlSurface& surface) : surface_(&surface) {}

  /// The context outlives the canvas for a moment, and must not call back into it.
  ~Canvas() override {
    if (context() != nullptr) disconnect(context(), nullptr, this, nullptr);
    leaveContext();
  }

 protected:
  void initializeGL() override {
    if (!surface_) return;
    // The context goes when the widget gets another window; what libmpv holds in it goes before.
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, [this] { leaveContext(); });
    surface_->begin();
  }

  void paintGL() override {
    if (!surface_) return;
    const QSize size = (QSizeF(this->size()) * devicePixelRatioF()).toSize();
    surface_->render(static_cast<int>(defaultFramebufferObject()), size);
  }

 private:
  void leaveContext() {
    if (surface_) surface_->release();
  }

  QPointer<GlSurface> surface_;
};

namespace {

void* addressOf(void*, const char* name) {
  const QOpenGLContext* const current = QOpenGLContext::currentContext();
  return current != nullptr ? reinterpret_cast<void*>(current->getProcAddress(name)) : nullptr;
}

}  // namespace

GlSurface::GlSurface(mpv_handle* mpv, QObject* parent)
    : VideoSurface(parent), mpv_(mpv), canvas_(new Canvas(*this)) {}

GlSurface::~GlSurface() {
  release();
  if (canvas_ && canvas_->parent() == nullptr) delete canvas_;
}

QWidget* GlSurface::widget() { return canvas_; }

void GlSurface::release() {
  if (!context_) return;
  if (canvas_) canvas_->makeCurrent();
  context_.reset();
  if (canvas_) canvas_->doneCurrent();
}

/// Called on libmpv's threads, where nothing of libmpv may be used.
void GlSurface::updateSoon(void* surface) {
  QMetaObject::invokeMethod(
      static_cast<GlSurface*>(surface),
      [surface] {
        const auto& canvas = static_cast<GlSurface*>(surface)->canvas_;
        if (canvas) canvas->update();
      },
      Qt::QueuedConnection);
}

void GlSurface::begin() {
  mpv_opengl_init_params gl{&addressOf, nullptr};
  std::array<mpv_render_param, 3> parameters = {
      {{MPV_RENDER_PARAM_API_TYPE, const_cast<char*>(MPV_RENDER_API_TYPE_OPENGL)},
       {MPV_RENDER_PARAM_OPENGL_INIT_PARAMS, &gl},
       {MPV_RENDER_PARAM_INVALID, nullptr}}};
  mpv_render_context* context = nullptr;
  if (mpv_render_context_create(&context, mpv_, parameters.data()) < 0) return;
  context_.reset(context);
  mpv_render_context_set_update_callback(context, &GlSurface::updateSoon, this);
  Q_EMIT ready();
}

void GlSurface::render(int framebuffer, const QSize& size) {
  if (!context_) return;
  mpv_opengl_fbo target{framebuffer, size.width(), size.height(), 0};
  int flip = 1;
  std::array<mpv_render_param, 3> parameters = {{{MPV_RENDER_PARAM_OPENGL_FBO, &target},
                                                 {MPV_RENDER_PARAM_FLIP_Y, &flip},
                                                 {MPV_RENDER_PARAM_INVALID, nullptr}}};
  mpv_render_context_render(context_.get(), parameters.data());
}

bool canUseOpenGl() {
  QOpenGLContext context;
  if (!context.create()) return false;
  // What libmpv draws with at least.
  return context.isOpenGLES() || context.format().version() >= qMakePair(2, 1);
}

}  // namespace playerx::window
