#include "playerx/cli/WakeUp.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <system_error>

namespace playerx::cli {

namespace {

constexpr int kInterrupts[] = {SIGINT, SIGTERM, SIGHUP};

// For the handler, which has nothing else.
int exitStatus = 0;
const char* farewell = "";
std::size_t farewellLength = 0;

void exitAtOnce(int) {
  [[maybe_unused]] ssize_t written = write(STDERR_FILENO, farewell, farewellLength);
  written = write(STDERR_FILENO, "\n", 1);
  _exit(exitStatus);
}

void handleInterrupts(void (*handler)(int)) {
  for (const int signal : kInterrupts) std::signal(signal, handler);
}

sigset_t interrupts() {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : kInterrupts) sigaddset(&set, signal);
  return set;
}

Descriptor checked(int descriptor, const char* what) {
  if (descriptor < 0) throw std::system_error(errno, std::generic_category(), what);
  return Descriptor(descriptor);
}

}  // namespace

void blockInterrupts() {
  const sigset_t set = interrupts();
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

InterruptsAllowed::InterruptsAllowed() {
  const sigset_t set = interrupts();
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

InterruptsAllowed::~InterruptsAllowed() { blockInterrupts(); }

InterruptsExit::InterruptsExit(int status, const char* sentence) {
  exitStatus = status;
  farewell = sentence;
  farewellLength = std::strlen(sentence);
  handleInterrupts(exitAtOnce);
  const sigset_t set = interrupts();
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

InterruptsExit::~InterruptsExit() {
  blockInterrupts();
  handleInterrupts(SIG_DFL);
}

WakeUp::WakeUp() : event_(checked(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC), "eventfd")) {
  blockInterrupts();
  const sigset_t set = interrupts();
  signal_ = checked(signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC), "signalfd");
}

void WakeUp::raise() {
  const std::uint64_t one = 1;
  // Fails only when the counter is full: then the wait ends anyway.
  [[maybe_unused]] const ssize_t written = write(event_.get(), &one, sizeof one);
}

WakeReason WakeUp::wait(std::chrono::milliseconds timeout, int descriptor) {
  std::array<pollfd, 3> watched = {
      {{signal_.get(), POLLIN, 0}, {event_.get(), POLLIN, 0}, {descriptor, POLLIN, 0}}};
  poll(watched.data(), watched.size(),
       timeout.count() < 0 ? -1 : static_cast<int>(timeout.count()));
  if (takeInterrupt()) return WakeReason::kInterrupt;
  std::uint64_t count = 0;
  if (read(event_.get(), &count, sizeof count) == sizeof count) return WakeReason::kEvent;
  return watched[2].revents != 0 ? WakeReason::kEvent : WakeReason::kTimeout;
}

WakeReason WakeUp::rest(std::chrono::milliseconds time) {
  pollfd watched{signal_.get(), POLLIN, 0};
  poll(&watched, 1, static_cast<int>(time.count()));
  return takeInterrupt() ? WakeReason::kInterrupt : WakeReason::kTimeout;
}

bool WakeUp::isInterrupted() const {
  pollfd watched{signal_.get(), POLLIN, 0};
  return poll(&watched, 1, 0) > 0;
}

bool WakeUp::takeInterrupt() {
  signalfd_siginfo signal;
  return read(signal_.get(), &signal, sizeof signal) == sizeof signal;
}

}  // namespace playerx::cli
