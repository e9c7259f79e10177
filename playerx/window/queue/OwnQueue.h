#pragma once

#include <QElapsedTimer>

#include "playerx/app/door/QueueServer.h"
#include "playerx/app/session/PlayerSession.h"
#include "playerx/app/session/QueueService.h"
#include "playerx/window/queue/QueueEnd.h"

namespace playerx::window {

/// The queue of this process, which other processes may use meanwhile. On the session's thread.
class OwnQueue : public QueueEnd {
 public:
  /// What the queue needs from the window. `wake` and `wakeServer` are called on any thread, when
  /// an `update` and an `answerRequests` are due, and must not wait.
  struct Links {
    std::function<void()> wake;
    std::function<void()> wakeServer;
    Listener listener;
    door::QueueServer::Show show;
  };

  /// Begins to download, unless the queue is to stay paused. The session is open for changes, not
  /// yet started, and outlives this.
  OwnQueue(session::PlayerSession& session, Links links, bool staysPaused);

  /// Parks what runs.
  ~OwnQueue() override;

  session::Reply ask(const session::Request& request) override { return service_.handle(request); }
  void update() override;
  const std::vector<model::ItemState>& queue() const override {
    return service_.watch().queue().kept();
  }
  bool isPaused() const override { return session_.manager().isPaused(); }
  std::string problem() const override { return {}; }

  /// Answers other processes.
  void answerRequests() { server_.answerRequests(); }

 private:
  void tell(const session::QueueEvent& event);

  session::PlayerSession& session_;
  const Listener listener_;
  QElapsedTimer measured_;
  model::QueueProgress told_;
  session::QueueService service_;
  door::QueueServer server_;
};

}  // namespace playerx::window
