#include "playerx/app/door/QueueServer.h"

#include <QCoreApplication>
#include <utility>

#include "playerx/app/door/DoorPath.h"
#include "playerx/app/door/Protocol.h"

namespace playerx::door {

using session::Reply;
using session::Request;

namespace {

QByteArray greeting(bool isBusy) {
  return write(Greeting{.version = QCoreApplication::applicationVersion().toStdString(),
                        .pid = QCoreApplication::applicationPid(),
                        .isBusy = isBusy});
}

bool isChange(Request::Action action) {
  using enum Request::Action;
  return action != kList && action != kWatch && action != kPing;
}

}  // namespace

QueueServer::QueueServer(session::QueueService& service, std::function<void()> wake, Show show)
    : service_(service),
      show_(std::move(show)),
      door_(greeting(false), greeting(true), std::move(wake)) {}

std::string QueueServer::listen(const std::string& dataFolder) {
  return door_.listen(doorPath(dataFolder));
}

void QueueServer::answerRequests() {
  for (const DoorServer::Line& line : door_.takeLines()) {
    door_.send(line.visitor, write(answer(line)));
  }
}

void QueueServer::publish(const session::QueueEvent& event) {
  std::erase_if(watchers_, [this](DoorServer::Visitor each) { return !door_.isThere(each); });
  if (watchers_.empty()) return;
  const QByteArray line = write(event);
  for (const DoorServer::Visitor watcher : watchers_) door_.send(watcher, line);
}

Reply QueueServer::answer(const DoorServer::Line& line) {
  std::string fault;
  const std::optional<Request> request = readRequest(line.text, &fault);
  if (!fault.empty()) return {Reply::Outcome::kWrongUse, {fault}};
  if (!request) return {Reply::Outcome::kFailed, {"The request was not understood."}};
  if (request->action == Request::Action::kShow && show_) {
    show_(request->inputs);
    return {};
  }
  Reply reply = service_.handle(*request);
  const std::string unsaved = isChange(request->action) ? service_.saveProblem() : "";
  if (!unsaved.empty()) reply.notes.push_back(unsaved);
  if (!unsaved.empty() && reply.outcome == Reply::Outcome::kDone) {
    reply.outcome = Reply::Outcome::kFailed;
  }
  if (request->action == Request::Action::kWatch) watchers_.insert(line.visitor);
  return reply;
}

}  // namespace playerx::door
