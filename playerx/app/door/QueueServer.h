#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "playerx/app/door/DoorServer.h"
#include "playerx/app/session/QueueService.h"

namespace playerx::door {

/// Lets other processes at the queue of this one: answers their requests and tells those that watch
/// what happens. On the session's thread.
///
/// The owner of the service passes every event of it on to `publish`, and calls `answerRequests`
/// when it is woken.
class QueueServer {
 public:
  /// Brings the window to the front and has it add inputs.
  using Show = std::function<void(const std::vector<std::string>& inputs)>;

  /// `wake` is called on a thread of the server's own when there are requests to answer, and must
  /// not wait. The service outlives the server. `show` is left out where there is no window.
  QueueServer(session::QueueService& service, std::function<void()> wake, Show show = nullptr);

  /// Lets others in. The caller holds the lock of the data folder. Returns why not, in one
  /// sentence, and empty on success. Once.
  std::string listen(const std::string& dataFolder);

  /// Carries out what was asked since the last call.
  void answerRequests();

  void publish(const session::QueueEvent& event);

 private:
  session::Reply answer(const DoorServer::Line& line);

  session::QueueService& service_;
  const Show show_;
  std::set<DoorServer::Visitor> watchers_;
  DoorServer door_;
};

}  // namespace playerx::door
