#include "playerx/window/shell/PreferencesController.h"

#include "playerx/window/desktop/DesktopNews.h"
#include "playerx/window/model/WindowMemory.h"
#include "playerx/window/queue/WindowQueue.h"
#include "playerx/window/shell/WindowDialogs.h"

namespace playerx::window {

PreferencesController::PreferencesController(const Parts& parts, QObject* parent)
    : QObject(parent), parts_(parts) {
  parts_.news.setPreferences(parts_.memory.preferences());
  connect(&parts_.queue, &WindowQueue::preferencesRead, this,
          [this](const QueuePreferences& preferences) { queue_ = preferences; });
  connect(&parts_.dialogs, &WindowDialogs::preferencesGiven, this, &PreferencesController::set);
}

void PreferencesController::ask() {
  parts_.dialogs.askForPreferences(queue_, parts_.memory.preferences());
}

void PreferencesController::set(const QueuePreferences& queue, const WindowPreferences& window) {
  parts_.memory.keepPreferences(window);
  parts_.news.setPreferences(window);
  if (queue != queue_) parts_.queue.setPreferences(queue);
}

}  // namespace playerx::window
