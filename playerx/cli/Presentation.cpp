#include "playerx/cli/Presentation.h"

#include "playerx/app/model/FilmCheck.h"
#include "playerx/cli/Reporter.h"

namespace playerx::cli {

using session::QueueEvent;
using session::Reply;

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
  for (const std::string& sentence : reply.results) reporter.done(sentence);
  return static_cast<int>(reply.outcome);
}

void noteWhatIsLeft(const std::vector<model::ItemState>& queue,
                    const std::function<bool(unsigned int)>& isMeant, Reporter& reporter) {
  std::vector<std::string> paused;
  std::vector<std::string> failed;
  for (std::size_t i = 0; i < queue.size(); ++i) {
    if (!isMeant(queue[i].id)) continue;
    const std::string position = std::to_string(i + 1);
    if (queue[i].status == DownloadStatusStopped) paused.push_back(position);
    if (queue[i].status == DownloadStatusFailed) failed.push_back(position);
  }
  if (paused.size() == 1) {
    reporter.note("One film stays paused; `resume " + paused[0] + "` lets it go on.");
  } else if (!paused.empty()) {
    reporter.note(std::to_string(paused.size()) + " films stay paused; `resume` lets them go on.");
  }
  if (failed.size() == 1) {
    reporter.note("One film has failed before; `retry " + failed[0] + "` queues it again.");
  } else if (!failed.empty()) {
    reporter.note(std::to_string(failed.size()) +
                  " films have failed before; `retry all` queues them again.");
  }
}

QueuePrint::QueuePrint(const session::Places& places, bool isLong, Reporter& reporter)
    : places_(places), isLong_(isLong), reporter_(reporter), reasons_(places.data) {}

void QueuePrint::add(const model::ItemState& item, const model::Progress& progress) {
  sum_.add(item);
  const bool isComplete = item.status == DownloadStatusCompleted;
  reporter_.listed({.position = static_cast<int>(sum_.items),
                    .item = item,
                    .progress = progress,
                    .reason = reasons_.find(item),
                    .oddity = isComplete ? model::findOddity(item, places_.media) : "",
                    .isLong = isLong_});
}

void QueuePrint::end(bool isPaused) {
  if (sum_.items == 0) return reporter_.note("The queue is empty.");
  sum_.isPaused = isPaused;
  reporter_.listedAll(sum_);
}

}  // namespace playerx::cli
