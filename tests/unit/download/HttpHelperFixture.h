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
/// The shared flag lets transfers run.
class HttpHelperTest : public testing::Test {
 protected:
  using Result = std::unique_ptr<HttpResult>;

  HttpHelperTest() {
    HttpHelper::sDownloadCancelled = 0;
    helper_.setup(server_.url("/film.avi"), "");
  }

  /// A gate that outlives the server.
  Gate& gate() { return gates_.emplace_back(); }

  Result infoOf(const std::string& response) {
    server_.always(Script::answer(response));
    return Result(helper_.getInfo());
  }

  static Result get(HttpHelper& helper, HttpCallback& receiver) {
    helper.setCallbacks(&receiver);
    return Result(helper.get(""));
  }

  Result get(const std::string& requestData = "") {
    helper_.setCallbacks(&receiver_);
    return Result(helper_.get(requestData));
  }

  std::size_t header(const std::string& line) {
    std::string bytes = line;
    return HttpHelper::downloadHeaderFunc(bytes.data(), 1, bytes.size(), &helper_);
  }

  /// A server's part that sends "abc" of a body and then stays silent.
  static Script silentAfterThePiece() {
    return Script().readRequest().send("HTTP/1.0 200 OK\r\nContent-Length: 9\r\n\r\nabc").stall();
  }

  /// A server's part that sends "abc", and "def" once the gate is open.
  static Script inTwoPieces(Gate& rest) {
    return Script()
        .readRequest()
        .send("HTTP/1.0 200 OK\r\nContent-Length: 6\r\n\r\nabc")
        .stallUntil(rest)
        .send("def");
  }

  /// A server's part that goes on sending for longer than any test waits.
  static Script withoutEnd() {
    return Script()
        .readRequest()
        .send("HTTP/1.0 200 OK\r\nContent-Length: 99999\r\n\r\n")
        .drip(std::string(99999, 'x'), std::chrono::milliseconds(1));
  }

  std::deque<Gate> gates_;
  ScriptedServer server_;
  EventLog log_;
  RecordingCallback receiver_{log_};
  HttpHelper helper_;
};

}  // namespace support
