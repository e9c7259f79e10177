#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "playerx/framework/PluginContext.h"
#include "playerx/framework/UserMessages.h"
#include "playerx/platform/GuardMutex.h"

namespace playerx::session {

/// Keeps what the plug-ins tell the user until the face shows it. Any thread.
class Messages : public UserMessages {
 public:
  /// `wake` is called, on the thread of the plug-in, for every new sentence.
  explicit Messages(std::function<void()> wake) : wake_(std::move(wake)) {}

  void tellUser(const std::string& sentence) override;

  /// The sentences since the last call, oldest first.
  std::vector<std::string> take();

  /// Offers these messages to the plug-ins of `context`, which must not outlive them.
  void offerTo(PluginContext& context);

 private:
  const std::function<void()> wake_;
  GuardMutex mutex_;
  std::vector<std::string> sentences_ KVPM_GUARDED_BY(mutex_);
};

}  // namespace playerx::session
