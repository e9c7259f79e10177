#include "playerx/cli/Presentation.h"

#include <algorithm>

#include "playerx/app/model/FilmCheck.h"
#include "playerx/cli/Reporter.h"

namespace playerx::cli {

using session::QueueEvent;
using session::Reply;

namespace {

constexpr char kEmpty[] = "The queue is empty.";

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
  for (const model::ItemState& item : reply.there) reporter.wasThere(item);
  for (const std::string& sentence : reply.notes) reporter.note(sentence);
  for (const std::string& sentence : reply.results) reporter.done(sentence);
  return static_cast<int>(reply.outcome);
}

void noteRemoved(const model::ItemState& item, Reporter& reporter) {
  reporter.note(item.title + " was taken out of the queue.");
}

void noteIfEmpty(std::size_t items, Reporter& reporter) {
  if (items == 0) reporter.done(kEmpty);
}

void noteWhatIsLeft(const std::vector<model::ItemState>& queue,
                    const std::function<bool(unsigned int)>& isMeant, Reporter& reporter) {
  const auto count = [&](DownloadStatusEnumType status) {
    return std::count_if(queue.begin(), queue.end(), [&](const model::ItemState& item) {
      return item.status == status && isMeant(item.id);
    });
  };
  // Without positions: the one that has come last may be about to move to the end.
  const auto paused = count(DownloadStatusStopped);
  const auto failed = count(DownloadStatusFailed);
  if (paused == 1) reporter.note("One film stays paused; `resume` lets it go on.");
  if (paused > 1) {
    reporter.note(std::to_string(paused) + " films stay paused; `resume` lets them go on.");
  }
  if (failed == 1) reporter.note("One film has failed before; `retry all` queues it again.");
  if (failed > 1) {
    reporter.note(std::to_string(failed) +
                  " films have failed before; `retry all` queues them again.");
  }
}

QueuePrint::QueuePrint(const session::Places& places, bool isLong, Reporter& reporter)
    : media_(places.media), isLong_(isLong), reporter_(reporter), reasons_(places.data) {}

void QueuePrint::add(const model::ItemState& item, const model::Progress& progress) {
  sum_.add(item);
  const bool isComplete = item.status == DownloadStatusCompleted;
  reporter_.listed({.position = static_cast<int>(sum_.items),
                    .item = item,
                    .progress = progress,
                    .reason = reasons_.find(item),
                    .oddity = isComplete ? model::findOddity(item, media_, folders_) : "",
                    .isLong = isLong_});
}

void QueuePrint::end(bool isPaused) {
  if (sum_.items == 0) return reporter_.note(kEmpty);
  sum_.isPaused = isPaused;
  reporter_.listedAll(sum_);
}

}  // namespace playerx::cli
