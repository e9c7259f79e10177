#include "playerx/window/playback/VideoSurface.h"

#include "playerx/window/playback/GlSurface.h"
#include "playerx/window/playback/SoftwareSurface.h"

namespace playerx::window {

VideoSurface* makeVideoSurface(mpv_handle* mpv, QObject* parent) {
  if (canUseOpenGl()) return new GlSurface(mpv, parent);
  return new SoftwareSurface(mpv, parent);
}

}  // namespace playerx::window
