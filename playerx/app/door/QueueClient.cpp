#include "playerx/app/door/QueueClient.h"

#include <QDeadlineTimer>

#include "playerx/app/door/DoorPath.h"
#include "playerx/app/door/DoorServer.h"

namespace playerx::door {

using session::Reply;

namespace {

constexpr char kGone[] = "The player that held the queue has ended.";
constexpr char kBusy[] =
    "The player that holds the queue talks with as many others as it can; try again later.";
constexpr char kTooLong[] =
    "This is more than the player that holds the queue takes at once; give fewer addresses at a "
    "time.";
constexpr char kNotUnderstood[] =
    "What the player that holds the queue says is not understood; close it, then try again.";

std::string problemOf(const Greeting& greeting) {
  if (greeting.isBusy) return kBusy;
  if (greeting.protocol == kProtocol) return {};
  return "The queue is held by another version of the player (" + greeting.version + ", process " +
         std::to_string(greeting.pid) + "); close it, or use that version.";
}

}  // namespace

QueueClient::Outcome QueueClient::connect(const std::string& dataFolder,
                                          std::chrono::milliseconds longest) {
  const std::optional<QByteArray> line = door_.connect(doorPath(dataFolder), longest);
  if (!line && !door_.isConnected()) return Outcome::kNoServer;
  if (line) {
    const std::optional<Greeting> greeting = readGreeting(*line);
    problem_ = greeting ? problemOf(*greeting) : kNotUnderstood;
    if (greeting && greeting->isBusy) return Outcome::kBusy;
  } else {
    problem_ = kSilent;
  }
  return problem_.empty() ? Outcome::kQueue : Outcome::kIncompatible;
}

bool QueueClient::send(const session::Request& request) {
  const QByteArray line = write(request);
  if (line.size() > kLongestLine) {
    problem_ = kTooLong;
  } else if (!door_.send(line)) {
    problem_ = kGone;
  }
  return problem_.empty();
}

std::optional<Answer> QueueClient::receive(std::chrono::milliseconds longest) {
  const std::optional<QByteArray> line = door_.receive(longest);
  if (!line) {
    if (!door_.isConnected()) problem_ = kGone;
    return std::nullopt;
  }
  const std::optional<Answer> answer = readAnswer(*line);
  if (!answer) problem_ = kNotUnderstood;
  return answer;
}

std::optional<Reply> QueueClient::ask(const session::Request& request,
                                      std::chrono::milliseconds longest) {
  const QDeadlineTimer deadline(longest);
  send(request);
  while (problem_.empty() && !deadline.hasExpired()) {
    const auto answer = receive(std::chrono::milliseconds(deadline.remainingTime()));
    if (answer && std::holds_alternative<Reply>(*answer)) return std::get<Reply>(*answer);
  }
  if (problem_.empty()) problem_ = kSilent;
  return std::nullopt;
}

}  // namespace playerx::door
