#include "plugin/HostEventLoop.h"

#include <QCoreApplication>
#include <QThread>

namespace plugin {
namespace {

/// Short enough for a window to repaint smoothly.
constexpr std::chrono::milliseconds kFrame{20};
constexpr std::chrono::milliseconds kNoFrames{500};

bool isLoopThread() {
  const QCoreApplication* const application = QCoreApplication::instance();
  return application != nullptr && application->thread() == QThread::currentThread();
}

}  // namespace

void HostEventLoop::process() {
  if (isLoopThread()) QCoreApplication::processEvents();
}

std::chrono::milliseconds HostEventLoop::longestSleep() {
  return isLoopThread() ? kFrame : kNoFrames;
}

}  // namespace plugin
