#include "plugin/HostEventLoop.h"

#include <QCoreApplication>
#include <QThread>

#include "plugin/EventCount.h"

namespace plugin {
namespace {

/// Short enough for a window to repaint smoothly.
constexpr std::chrono::milliseconds kFrame{20};

bool isLoopThread() {
  const QCoreApplication* const application = QCoreApplication::instance();
  return application != nullptr && application->thread() == QThread::currentThread();
}

}  // namespace

void HostEventLoop::process() {
  if (isLoopThread()) QCoreApplication::processEvents();
}

std::chrono::milliseconds HostEventLoop::longestSleep() {
  return isLoopThread() ? kFrame : EventCount::kLongestWait;
}

}  // namespace plugin
