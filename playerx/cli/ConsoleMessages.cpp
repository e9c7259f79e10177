#include "playerx/cli/ConsoleMessages.h"

#include <utility>

#include "playerx/cli/WakeUp.h"

namespace playerx {

void ConsoleMessages::tellUser(const std::string& sentence) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    sentences_.push_back(sentence);
  }
  wakeUp_.raise();
}

std::vector<std::string> ConsoleMessages::take() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return std::exchange(sentences_, {});
}

}  // namespace playerx
