#include "playerx/app/session/Resources.h"

#include <sys/resource.h>

#include <algorithm>
#include <exception>
#include <future>
#include <thread>
#include <vector>

#include "playerx/platform/QuietThread.h"

namespace playerx::session {

namespace {

// A download takes about 20 files.
constexpr rlim_t kFiles = 32;

/// With room for all processes that may use the queue of this one too.
constexpr rlim_t kFilesWithVisitors = 192;

/// Raises the limit of open files as far as needed and allowed. Returns the limit.
rlim_t raiseFileLimit() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return kFiles;
  if (limit.rlim_cur < kFilesWithVisitors) {
    limit.rlim_cur = std::min(limit.rlim_max, kFilesWithVisitors);
    ::setrlimit(RLIMIT_NOFILE, &limit);
  }
  return limit.rlim_cur;
}

/// The system tells how many threads there may be in more places than a process can look at.
bool mayStartThreads(std::size_t count) {
  std::promise<void> end;
  const std::shared_future<void> ended = end.get_future().share();
  std::vector<std::thread> threads;
  try {
    while (threads.size() < count) {
      threads.push_back(startQuietThread([ended] { ended.wait(); }));
    }
  } catch (const std::exception&) {
  }
  end.set_value();
  for (std::thread& thread : threads) thread.join();
  return threads.size() == count;
}

}  // namespace

std::string lackOfResources(std::size_t threads) {
  const rlim_t files = raiseFileLimit();
  if (files < kFiles) {
    return "Only " + std::to_string(files) + " files may be open at once, and " +
           std::to_string(kFiles) + " are needed; raise the limit (ulimit -n) and try again.";
  }
  if (!mayStartThreads(threads)) {
    return "The system lets no more threads be started; end other programs or raise the limit "
           "(ulimit -u), and try again.";
  }
  return {};
}

}  // namespace playerx::session
