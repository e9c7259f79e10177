#include "playerx/cli/StandardOutput.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <ext/stdio_filebuf.h>
#include <system_error>

namespace playerx::cli {

StandardOutput::StandardOutput(Diagnostics diagnostics)
    : kept_(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)) {
  if (kept_ < 0) throw std::system_error(errno, std::generic_category(), "standard output");
  buffer_ = std::make_unique<__gnu_cxx::stdio_filebuf<char>>(kept_, std::ios::out);
  stream_ = std::make_unique<std::ostream>(buffer_.get());
  const bool dropped = diagnostics == Diagnostics::kDropped;
  const int target = dropped ? ::open("/dev/null", O_WRONLY | O_CLOEXEC) : STDERR_FILENO;
  if (target >= 0) dup2(target, STDOUT_FILENO);
  if (dropped && target >= 0) close(target);
}

StandardOutput::~StandardOutput() {
  stream_->flush();
  std::fflush(stdout);
  dup2(kept_, STDOUT_FILENO);
  // The buffer owns the descriptor and closes it.
}

}  // namespace playerx::cli
