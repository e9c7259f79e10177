#include "tests/support/Process.h"

#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <string_view>

extern char** environ;

namespace support {
namespace {

// Each of these would change what a child trusts or whom it asks.
const std::vector<std::string> kUnwanted = {
    "SSL_CERT_FILE", "SSL_CERT_DIR", "OPENSSL_CONF",  "OPENSSL_MODULES", "http_proxy",
    "https_proxy",   "no_proxy",     "all_proxy",     "HTTP_PROXY",      "HTTPS_PROXY",
    "NO_PROXY",      "ALL_PROXY",    "CURL_CA_BUNDLE"};

bool listed(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

std::vector<std::string> environmentFor(const ProcessOptions& options) {
  std::map<std::string, std::string> variables;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view text(*entry);
    const std::size_t equals = text.find('=');
    const std::string name(text.substr(0, equals));
    if (equals == std::string_view::npos || listed(kUnwanted, name)) continue;
    if (!listed(options.removed, name)) variables[name] = text.substr(equals + 1);
  }
  for (const auto& [name, value] : options.environment) variables[name] = value;
  std::vector<std::string> entries;
  for (const auto& [name, value] : variables) entries.push_back(name + "=" + value);
  return entries;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

UniqueFd memoryFile(const char* name, const std::string& content) {
  UniqueFd fd(memfd_create(name, MFD_CLOEXEC));
  if (!fd) throw std::runtime_error("cannot make a memory file");
  if (::pwrite(fd.get(), content.data(), content.size(), 0) != static_cast<ssize_t>(content.size()))
    throw std::runtime_error("cannot fill a memory file");
  return fd;
}

std::string contentOf(int fd) {
  std::string content;
  char piece[16384];
  ssize_t got = 0;
  while ((got = ::pread(fd, piece, sizeof piece, static_cast<off_t>(content.size()))) > 0)
    content.append(piece, static_cast<std::size_t>(got));
  return content;
}

struct ChildPlan {
  char* const* arguments;
  char* const* environment;
  const char* folder;  // null: stay
  int input, output, errors;
  pid_t parent;
};

// Between fork and exec: async-signal-safe calls only.
[[noreturn]] void becomeProgram(const ChildPlan& plan) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != plan.parent) _exit(126);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  signal(SIGPIPE, SIG_DFL);
  dup2(plan.input, STDIN_FILENO);
  dup2(plan.output, STDOUT_FILENO);
  dup2(plan.errors, STDERR_FILENO);
  if (plan.folder != nullptr && chdir(plan.folder) != 0) _exit(126);
  execvpe(plan.arguments[0], plan.arguments, plan.environment);
  _exit(127);
}

}  // namespace

Process::Process(const ProcessOptions& options)
    : input_(memoryFile("stdin", options.input)),
      output_(memoryFile("stdout", "")),
      errors_(memoryFile("stderr", "")) {
  std::vector<std::string> arguments = options.arguments;
  std::vector<std::string> environment = environmentFor(options);
  const std::vector<char*> argumentPointers = pointersTo(arguments);
  const std::vector<char*> environmentPointers = pointersTo(environment);
  const char* folder = options.workingFolder.empty() ? nullptr : options.workingFolder.c_str();
  const ChildPlan plan{argumentPointers.data(),
                       environmentPointers.data(),
                       folder,
                       input_.get(),
                       output_.get(),
                       errors_.get(),
                       getpid()};
  pid_ = fork();
  if (pid_ < 0) throw std::runtime_error("cannot fork");
  if (pid_ == 0) becomeProgram(plan);
}

Process::~Process() {
  if (!running()) return;
  ::kill(pid_, SIGKILL);
  wait();
}

void Process::send(int signal) {
  if (running()) ::kill(pid_, signal);
}

bool Process::poll() {
  if (status_) return true;
  siginfo_t news{};
  // Looks before it reaps: the halts of a traced child are reported too, and are the tracer's.
  waitid(P_PID, static_cast<id_t>(pid_), &news, WEXITED | WNOHANG | WNOWAIT);
  const bool hasEnded =
      news.si_code == CLD_EXITED || news.si_code == CLD_KILLED || news.si_code == CLD_DUMPED;
  if (!hasEnded) return false;
  int raw = 0;
  while (waitpid(pid_, &raw, 0) < 0 && errno == EINTR) {
  }
  status_ = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
  return true;
}

std::optional<int> Process::wait(std::chrono::milliseconds deadline) {
  waitFor([this] { return poll(); }, deadline);
  return status_;
}

std::string Process::output() const { return contentOf(output_.get()); }
std::string Process::errors() const { return contentOf(errors_.get()); }

bool Process::waitForOutput(const std::string& text) const {
  return waitFor([&] { return output().find(text) != std::string::npos; });
}

bool Process::waitForErrors(const std::string& text) const {
  return waitFor([&] { return errors().find(text) != std::string::npos; });
}

}  // namespace support
