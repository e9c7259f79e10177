#include "playerx/cli/Presentation.h"

#include "playerx/app/model/FilmCheck.h"
#include "playerx/app/reasons/ReasonFile.h"
#include "playerx/cli/Reporter.h"

namespace playerx::cli {

using session::QueueEvent;
using session::Reply;

namespace {

model::Progress progressOf(const model::ItemState& item, const ProgressOfItems& progress) {
  const auto found = progress.find(item.id);
  return found == progress.end() ? model::Progress{} : found->second;
}

}  // namespace

void present(const QueueEvent& event, Reporter& reporter) {
  switch (event.kind) {
    case QueueEvent::Kind::kAdded:
      return reporter.added(event.item);
    case QueueEvent::Kind::kChanged:
      return reporter.changed(event.item, event.progress);
    case QueueEvent::Kind::kFinished:
      return reporter.finished(event.item, event.sentence);
    case QueueEvent::Kind::kFailed:
      return reporter.failed(event.item, event.reason);
    case QueueEvent::Kind::kRemoved:
    case QueueEvent::Kind::kMoved:
      return;
    case QueueEvent::Kind::kNote:
      return reporter.note(event.sentence);
    case QueueEvent::Kind::kQueue:
      return reporter.queueProgress(event.queue);
  }
}

int present(const Reply& reply, Reporter& reporter) {
  for (const session::Refusal& refusal : reply.refused) {
    reporter.refused(refusal.input, refusal.reason);
  }
  for (const std::string& sentence : reply.notes) reporter.note(sentence);
  return static_cast<int>(reply.outcome);
}

void print(const std::vector<model::ItemState>& queue, const ProgressOfItems& progress,
           const session::Places& places, bool isLong, Reporter& reporter) {
  const reasons::ReasonFile reasons(places.data);
  int position = 0;
  for (const model::ItemState& item : queue) {
    const bool isComplete = item.status == DownloadStatusCompleted;
    reporter.listed({.position = ++position,
                     .item = item,
                     .progress = progressOf(item, progress),
                     .reason = reasons.find(item),
                     .oddity = isComplete ? findOddity(item, places.media) : "",
                     .isLong = isLong});
  }
  if (queue.empty()) return reporter.note("The queue is empty.");
  reporter.listedAll(model::progressOf(queue));
}

}  // namespace playerx::cli
