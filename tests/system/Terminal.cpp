#include "tests/system/Terminal.h"

#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "tests/support/WaitFor.h"

namespace system_test {
namespace {

winsize sizeOf(int columns) {
  constexpr unsigned short kRows = 24;
  return {kRows, static_cast<unsigned short>(columns), 0, 0};
}

[[noreturn]] void become(const std::vector<std::string>& arguments,
                         const std::map<std::string, std::string>& environment) {
  for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  std::vector<char*> words;
  for (const std::string& word : arguments) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  execvp(words[0], words.data());
  _exit(127);
}

}  // namespace

Terminal::Terminal(const std::vector<std::string>& arguments,
                   const std::map<std::string, std::string>& environment, int columns) {
  const winsize size = sizeOf(columns);
  int master = -1;
  program_ = forkpty(&master, nullptr, nullptr, &size);
  if (program_ < 0) throw std::runtime_error("no terminal");
  if (program_ == 0) become(arguments, environment);
  master_ = support::UniqueFd(master);
}

Terminal::~Terminal() {
  master_ = support::UniqueFd();
  kill(program_, SIGKILL);
  waitpid(program_, nullptr, 0);
}

void Terminal::type(const std::string& keys) {
  if (write(master_.get(), keys.data(), keys.size()) < 0) throw std::runtime_error("hung up");
}

void Terminal::resize(int columns) {
  const winsize size = sizeOf(columns);
  ioctl(master_.get(), TIOCSWINSZ, &size);
}

bool Terminal::waitFor(const std::string& text) {
  const auto deadline = std::chrono::steady_clock::now() + support::kGenerousDeadline;
  while (shown_.find(text) == std::string::npos) {
    constexpr int kLook = 100;  // milliseconds
    const bool isOver = std::chrono::steady_clock::now() > deadline;
    if (!read(kLook) || isOver) return shown_.find(text) != std::string::npos;
  }
  return true;
}

std::string Terminal::take() { return std::exchange(shown_, {}); }

/// False when the program has hung up.
bool Terminal::read(int milliseconds) {
  pollfd watched{master_.get(), POLLIN, 0};
  if (poll(&watched, 1, milliseconds) <= 0) return true;
  std::array<char, 4096> buffer{};
  const ssize_t length = ::read(master_.get(), buffer.data(), buffer.size());
  if (length > 0) shown_.append(buffer.data(), static_cast<std::size_t>(length));
  return length > 0;
}

}  // namespace system_test
