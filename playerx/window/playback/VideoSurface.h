#pragma once

#include <mpv/render.h>

#include <QObject>

class QWidget;

namespace playerx::window {

/// The place where libmpv draws: on the graphics card, or else in memory. Used on the UI thread.
class VideoSurface : public QObject {
  Q_OBJECT

 public:
  using QObject::QObject;

  virtual QWidget* widget() = 0;

  /// Whether libmpv can draw here now; a film must not be loaded before.
  virtual bool isReady() const = 0;

  /// Stops drawing for good. Has to happen before the libmpv handle ends.
  virtual void release() = 0;

 Q_SIGNALS:
  void ready();
};

/// Frees a render context, after having its callback forgotten.
struct RenderContextDeleter {
  void operator()(mpv_render_context* context) const;
};

}  // namespace playerx::window
