#include "playerx/window/queue/HandOver.h"

#include "playerx/app/door/QueueClient.h"

namespace playerx::window {

using door::QueueClient;
using session::Reply;
using session::Request;

namespace {

constexpr std::chrono::milliseconds kLongestMoment(1000);

}  // namespace

bool handOver(const QString& dataFolder, const QStringList& inputs) {
  QueueClient client;
  if (client.connect(dataFolder.toStdString(), kLongestMoment) != QueueClient::Outcome::kQueue) {
    return false;
  }
  Request request{.action = Request::Action::kShow};
  for (const QString& input : inputs) request.inputs.push_back(input.toStdString());
  const std::optional<Reply> reply = client.ask(request, kLongestMoment);
  return reply && reply->outcome == Reply::Outcome::kDone;
}

}  // namespace playerx::window
