#include "tests/system/TracedPlayer.h"

#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace system_test {

namespace {

/// A system call that is halted at, and which of its arguments are names of files.
struct WatchedCall {
  std::uint64_t number;
  const char* name;
  std::vector<int> names;
};

const std::vector<WatchedCall>& watchedCalls() {
  static const std::vector<WatchedCall> kCalls = {
#ifdef SYS_rename
      {SYS_rename, "rename", {0, 1}},     {SYS_link, "link", {0, 1}},
      {SYS_unlink, "unlink", {0}},
#endif
      {SYS_renameat, "renameat", {1, 3}}, {SYS_renameat2, "renameat2", {1, 3}},
      {SYS_linkat, "linkat", {1, 3}},     {SYS_unlinkat, "unlinkat", {1}},
      {SYS_fsync, "fsync", {}},           {SYS_fdatasync, "fdatasync", {}},
      {SYS_ftruncate, "ftruncate", {}},
  };
  return kCalls;
}

std::string textAt(pid_t thread, std::uint64_t address) {
  std::array<char, 4096> text{};
  iovec here{text.data(), text.size() - 1};
  iovec there{reinterpret_cast<void*>(address), text.size() - 1};
  // Reads up to the first page that is not there.
  if (process_vm_readv(thread, &here, 1, &there, 1, 0) > 0) return text.data();
  here.iov_len = there.iov_len = 4096 - address % 4096;
  here.iov_len = there.iov_len = std::min<std::size_t>(here.iov_len, text.size() - 1);
  return process_vm_readv(thread, &here, 1, &there, 1, 0) > 0 ? text.data() : "?";
}

/// The call that the thread is about to make; empty for a call that is not watched.
std::string callOf(pid_t thread) {
  __ptrace_syscall_info info{};
  if (ptrace(static_cast<__ptrace_request>(PTRACE_GET_SYSCALL_INFO), thread, sizeof info, &info) <=
          0 ||
      info.op != PTRACE_SYSCALL_INFO_ENTRY) {
    return {};
  }
  const auto& calls = watchedCalls();
  const auto found = std::find_if(calls.begin(), calls.end(), [&info](const WatchedCall& call) {
    return call.number == info.entry.nr;
  });
  if (found == calls.end()) return {};
  std::string words = found->name;
  for (const int index : found->names) words += " " + textAt(thread, info.entry.args[index]);
  return words;
}

/// The signal that a halted thread is to be given; 0 when it was not a signal that halted it.
int signalOf(int status) {
  const bool isEvent = status >> 16 != 0;
  const int signal = WSTOPSIG(status);
  return isEvent || signal == (SIGTRAP | 0x80) ? 0 : signal;
}

}  // namespace

TracedPlayer::TracedPlayer(support::ProcessOptions options) {
  // Halts itself before it becomes the player, so that no thread is missed.
  const std::vector<std::string> front = {"sh", "-c", "kill -STOP $$; exec \"$0\" \"$@\""};
  options.arguments.insert(options.arguments.begin(), front.begin(), front.end());
  process_ = std::make_unique<support::Process>(options);
  seize();
}

TracedPlayer::~TracedPlayer() = default;

void TracedPlayer::seize() const {
  const pid_t pid = process_->pid();
  siginfo_t state{};
  if (waitid(P_PID, static_cast<id_t>(pid), &state, WSTOPPED | WNOWAIT) != 0 ||
      state.si_code != CLD_STOPPED) {
    throw std::runtime_error("the player does not halt");
  }
  const long options = PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACECLONE | PTRACE_O_TRACEFORK |
                       PTRACE_O_TRACEVFORK | PTRACE_O_EXITKILL;
  if (ptrace(PTRACE_SEIZE, pid, nullptr, options) != 0) {
    throw std::runtime_error(std::string("the player cannot be traced: ") + std::strerror(errno));
  }
  kill(pid, SIGCONT);
}

std::optional<std::string> TracedPlayer::run(const Decision& isTheInstant) {
  std::optional<std::string> instant;
  while (const std::optional<pid_t> thread = nextHalted()) {
    int status = 0;
    waitpid(*thread, &status, __WALL);
    const bool isAtCall = WSTOPSIG(status) == (SIGTRAP | 0x80);
    const std::string call = isAtCall && !instant ? callOf(*thread) : "";
    if (!call.empty() && isTheInstant(call)) {
      instant = call;
      process_->send(SIGKILL);
    } else {
      ptrace(PTRACE_SYSCALL, *thread, nullptr, signalOf(status));
    }
  }
  return instant;
}

/// Waits until a thread is halted, and sees those off that have ended; nothing when the player has.
std::optional<pid_t> TracedPlayer::nextHalted() const {
  for (;;) {
    siginfo_t news{};
    const int result = waitid(P_ALL, 0, &news, WEXITED | WSTOPPED | WNOWAIT | __WALL);
    if (result != 0 && errno == EINTR) continue;
    if (result != 0) throw std::runtime_error("the player is gone");
    if (news.si_code == CLD_TRAPPED || news.si_code == CLD_STOPPED) return news.si_pid;
    if (news.si_pid == process_->pid()) return std::nullopt;
    waitpid(news.si_pid, nullptr, __WALL);
  }
}

}  // namespace system_test
