#pragma once

#include <QElapsedTimer>
#include <memory>

#include "playerx/app/door/QueueClient.h"
#include "playerx/window/queue/QueueEnd.h"

namespace playerx::window {

/// The queue of another process, at the other end of a socket.
class OtherQueue : public QueueEnd {
 public:
  /// Looks at the queue at once.
  OtherQueue(std::unique_ptr<door::QueueClient> client, Listener listener);

  session::Reply ask(const session::Request& request) override;
  void update() override;
  const std::vector<model::ItemState>& queue() const override { return queue_; }
  bool isPaused() const override { return isPaused_; }
  std::string problem() const override { return client_->problem(); }

 private:
  std::optional<session::Reply> receive(std::chrono::milliseconds longest);
  void take(const session::QueueEvent& event);
  void look(session::Request::Action action);
  void mindSilence();

  const std::unique_ptr<door::QueueClient> client_;
  const Listener listener_;
  std::vector<model::ItemState> queue_;
  bool isPaused_ = false;
  bool isLookDue_ = false;
  int awaited_ = 0;  ///< replies that are still to come
  bool isAnswered_ = false;
  bool isSaidSilent_ = false;
  QElapsedTimer silence_;
};

}  // namespace playerx::window
