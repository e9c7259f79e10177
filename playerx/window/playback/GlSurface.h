#pragma once

#include <QPointer>
#include <memory>

#include "playerx/window/playback/VideoSurface.h"

namespace playerx::window {

/// Draws with OpenGL. Only where `canUseOpenGl` says so.
class GlSurface : public VideoSurface {
  Q_OBJECT

 public:
  GlSurface(mpv_handle* mpv, QObject* parent);
  ~GlSurface() override;

  QWidget* widget() override;
  bool isReady() const override { return context_ != nullptr; }
  void release() override;

 private:
  class Canvas;

  static void updateSoon(void* surface);
  void begin();
  void render(int framebuffer, const QSize& size);

  mpv_handle* const mpv_;
  std::unique_ptr<mpv_render_context, RenderContextDeleter> context_;
  QPointer<Canvas> canvas_;  // owned by its parent once it has one
};

/// Whether an OpenGL context that libmpv can use can be made here; asked before any OpenGL widget
/// is made, since one without a context ends the program.
bool canUseOpenGl();

}  // namespace playerx::window
