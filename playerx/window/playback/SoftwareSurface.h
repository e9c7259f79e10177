#pragma once

#include <QImage>
#include <QPointer>
#include <QWidget>
#include <memory>

#include "playerx/window/playback/VideoSurface.h"

namespace playerx::window {

/// Draws into memory: where no graphics card can be used.
class SoftwareSurface : public VideoSurface {
  Q_OBJECT

 public:
  SoftwareSurface(mpv_handle* mpv, QObject* parent);
  ~SoftwareSurface() override;

  QWidget* widget() override;
  bool isReady() const override { return context_ != nullptr; }
  void release() override;

 private:
  class Canvas;

  static void updateSoon(void* surface);
  void render();

  std::unique_ptr<mpv_render_context, RenderContextDeleter> context_;
  QPointer<Canvas> canvas_;  // owned by its parent once it has one
};

}  // namespace playerx::window
