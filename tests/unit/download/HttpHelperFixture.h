#pragma once

#include <gmock/gmock.h>

#include <chrono>
#include <deque>
#include <future>
#include <memory>
#include <string>

#include "download/HttpHelper.h"
#include "tests/support/Gate.h"
#include "tests/support/ScriptedServer.h"
#include "tests/unit/download/RecordingCallback.h"

namespace support {

/// A helper that is set up for one film on a scripted server, and a receiver that is not yet set.
class HttpHelperTest : public testing::Test {
 protected:
  using Result = std::unique_ptr<HttpResult>;
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::milliseconds kPrompt{250};

  HttpHelperTest() { helper_.setup(server_.url("/film.avi"), ""); }

  /// A gate that outlives the server.
  Gate& gate() { return gates_.emplace_back(); }

  Result infoOf(const std::string& response) {
    server_.always(Script::answer(response));
    return Result(helper_.getInfo());
  }

  Result get(const std::string& requestData = "") {
    helper_.setCallbacks(&receiver_);
    return Result(helper_.get(requestData));
  }

  std::size_t header(const std::string& line) {
    std::string bytes = line;
    return HttpHelper::downloadHeaderFunc(bytes.data(), 1, bytes.size(), &helper_);
  }

  std::deque<Gate> gates_;
  ScriptedServer server_;
  EventLog log_;
  RecordingCallback receiver_{log_};
  HttpHelper helper_;
};

}  // namespace support
