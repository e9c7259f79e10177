#include "playerx/window/playback/VideoSurface.h"

namespace playerx::window {

void RenderContextDeleter::operator()(mpv_render_context* context) const {
  mpv_render_context_set_update_callback(context, nullptr, nullptr);
  mpv_render_context_free(context);
}

}  // namespace playerx::window
