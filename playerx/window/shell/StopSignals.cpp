#include "playerx/window/shell/StopSignals.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>

namespace playerx::window {

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

/// What a handler may use: it only makes this readable.
int raisedFd() {
  static const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  return descriptor;
}

void onSignal(int) {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(raisedFd(), &one, sizeof one);
}

}  // namespace

StopSignals::StopSignals(QObject* parent)
    : QObject(parent), notifier_(raisedFd(), QSocketNotifier::Read) {
  connect(&notifier_, &QSocketNotifier::activated, this, [this] {
    std::uint64_t count = 0;
    if (read(raisedFd(), &count, sizeof count) == sizeof count) Q_EMIT raised();
  });
  for (const int number : kSignals) std::signal(number, &onSignal);
}

StopSignals::~StopSignals() {
  for (const int number : kSignals) std::signal(number, SIG_DFL);
}

}  // namespace playerx::window
