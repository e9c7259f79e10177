#include "playerx/cli/Presentation.h"

#include "playerx/cli/Reporter.h"

namespace playerx::cli {

using session::QueueEvent;
using session::Reply;
using session::Request;

namespace {

void print(const std::vector<model::ItemState>& queue, Reporter& reporter) {
  int position = 0;
  for (const model::ItemState& item : queue) reporter.listed(++position, item);
  if (queue.empty()) reporter.note("The queue is empty.");
}

}  // namespace

void present(const QueueEvent& event, Reporter& reporter) {
  switch (event.kind) {
    case QueueEvent::Kind::kAdded:
      return reporter.added(event.item);
    case QueueEvent::Kind::kChanged:
      return reporter.changed(event.item, event.bytesPerSecond);
    case QueueEvent::Kind::kFinished:
      return reporter.finished(event.item, event.sentence);
    case QueueEvent::Kind::kFailed:
      return reporter.failed(event.item, event.reason);
    case QueueEvent::Kind::kRemoved:
      return;
    case QueueEvent::Kind::kNote:
      return reporter.note(event.sentence);
  }
}

int present(const Request& request, const Reply& reply, Reporter& reporter) {
  for (const session::Refusal& refusal : reply.refused) {
    reporter.refused(refusal.input, refusal.reason);
  }
  for (const std::string& sentence : reply.notes) reporter.note(sentence);
  if (request.action == Request::Action::kList && reply.notes.empty()) {
    print(reply.items, reporter);
  }
  return static_cast<int>(reply.outcome);
}

}  // namespace playerx::cli
