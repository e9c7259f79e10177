#include "playerx/window/queue/InputAdder.h"

#include <QThread>
#include <algorithm>
#include <utility>

#include "playerx/window/queue/InputReports.h"

namespace playerx::window {

using session::Reply;
using session::Request;

namespace {

/// Inputs that are handed over in one request: few enough for the queue to be looked at meanwhile.
constexpr qsizetype kInputsAtOnce = 100;

}  // namespace

void InputAdder::add(const QStringList& inputs) {
  const bool isAdding = !toAdd_.isEmpty();
  if (!isAdding) films_.clear();
  toAdd_.append(inputs);
  if (!isAdding) addNext();
}

void InputAdder::addWaiting() {
  if (!waiting_.isEmpty()) add(std::exchange(waiting_, {}));
}

void InputAdder::addRest() {
  while (!toAdd_.isEmpty() && waiting_.isEmpty()) addFirst();
}

void InputAdder::addFirst() {
  addSome(toAdd_.mid(0, kInputsAtOnce));
  toAdd_.remove(0, std::min<qsizetype>(kInputsAtOnce, toAdd_.size()));
}

void InputAdder::addNext() {
  addFirst();
  // At the window's end `addRest` follows, and nobody is left to report to.
  if (QThread::currentThread()->isInterruptionRequested()) return;
  Q_EMIT advanced(static_cast<int>(toAdd_.size()));
  if (!toAdd_.isEmpty()) {
    QMetaObject::invokeMethod(this, &InputAdder::addNext, Qt::QueuedConnection);
    return;
  }
  Q_EMIT allAdded();
  report_.films = std::exchange(films_, {});
  report_.added = static_cast<int>(report_.films.size());
  Q_EMIT reported(std::exchange(report_, {}));
}

void InputAdder::addSome(const QStringList& inputs) {
  Request request{.action = Request::Action::kAdd, .starts = false};
  for (const QString& input : inputs) request.inputs.push_back(input.toStdString());
  const std::optional<Reply> reply = ask_(request);
  if (!reply) {
    waiting_.append(inputs);
    return;
  }
  const bool hasFailed = reply->outcome == Reply::Outcome::kFailed && !reply->notes.empty();
  if (hasFailed) Q_EMIT failed(reply->notes.front());
  addReply(*reply, report_);
}

}  // namespace playerx::window
