#include "playerx/cli/LiveLine.h"

#include <algorithm>
#include <vector>

#include "playerx/app/model/TextFormat.h"
#include "playerx/cli/TerminalText.h"

namespace playerx::cli {

using model::formatBytes;
using model::ItemState;
using model::Progress;
using model::QueueProgress;

namespace {

constexpr std::size_t kGap = 2;
constexpr std::size_t kWidestBar = 24;
constexpr std::size_t kNarrowestBar = 8;
constexpr std::size_t kLeastOfTitle = 10;

/// The bar leaves that much of a title.
constexpr std::size_t kTitleBesideBar = 30;

std::string bytesPart(const ItemState& item, const Progress& progress) {
  if (item.size == 0) return progress.arrived ? formatBytes(*progress.arrived) : "";
  const std::string size = formatBytes(item.size);
  return progress.arrived ? formatBytes(*progress.arrived) + " of " + size : size;
}

/// How fast, or for how long nothing has come.
std::string speedPart(const ItemState& item, const Progress& progress) {
  if (progress.silentSeconds > 0) {
    const bool isAsked = item.status != DownloadStatusDownloading;
    const std::string silence = (isAsked ? "no answer for " : "no byte for ") +
                                model::formatDuration(progress.silentSeconds);
    return progress.isRetrying ? silence + ", trying again" : silence;
  }
  return progress.bytesPerSecond > 0 ? formatBytes(progress.bytesPerSecond) + "/s" : "";
}

Progress withoutRetry(Progress progress) {
  progress.isRetrying = false;
  return progress;
}

std::string timePart(const ItemState& item, const Progress& progress) {
  const bool isArriving = item.status == DownloadStatusDownloading && item.percent < 100;
  if (!isArriving || progress.silentSeconds > 0) return "";
  return progress.secondsLeft ? model::formatDuration(*progress.secondsLeft) + " left"
                              : "time left unknown";
}

std::string queuePart(const QueueProgress& queue) {
  if (queue.items < 2) return "";
  return std::to_string(queue.completed) + " of " + std::to_string(queue.items) + " films";
}

std::string percentPart(int percent) {
  const std::string number = std::to_string(percent);
  return std::string(number.size() < 3 ? 3 - number.size() : 0, ' ') + number + " %";
}

/// Empties the parts that do not fit beside those before them.
void dropWhatDoesNotFit(const std::vector<std::string*>& byRank, std::size_t columns) {
  for (std::string* part : byRank) {
    const std::size_t needed = part->empty() ? 0 : kGap + columnsOf(*part);
    if (needed > columns) part->clear();
    columns -= std::min(needed, columns);
  }
}

}  // namespace

std::string liveLine(const ItemState& item, const Progress& progress, const QueueProgress& queue,
                     std::size_t columns) {
  const std::string percent = percentPart(item.percent);
  const std::string title = printable(displayName(item));
  // That nothing arrives is worth more than the title.
  const std::size_t leastOfTitle = progress.silentSeconds > 0 ? 0 : kLeastOfTitle;
  const std::size_t titleRoom = kGap + std::min(columnsOf(title), leastOfTitle);
  const std::size_t taken = percent.size() + titleRoom;
  std::string bytes = bytesPart(item, progress);
  const std::size_t room = columns > taken ? columns - taken : 0;
  std::string speed = speedPart(item, progress);
  if (kGap + columnsOf(speed) > room) speed = speedPart(item, withoutRetry(progress));
  std::string time = timePart(item, progress);
  std::string total = queuePart(queue);
  dropWhatDoesNotFit({&time, &speed, &bytes, &total}, room);

  std::string numbers;
  for (const std::string* part : {&bytes, &speed, &time, &total}) {
    if (!part->empty()) numbers += std::string(kGap, ' ') + *part;
  }
  const std::size_t besideBar = kGap + std::min(columnsOf(title), kTitleBesideBar);
  const std::size_t used = percent.size() + columnsOf(numbers) + besideBar + kGap;
  const std::size_t bar = columns > used ? std::min(columns - used, kWidestBar) : 0;
  std::string line = percent;
  if (bar >= kNarrowestBar) {
    line += std::string(kGap, ' ') + progressBar(item.percent, static_cast<int>(bar));
  }
  line += numbers;
  const std::size_t shown = columnsOf(line) + kGap;
  if (shown < columns) line += std::string(kGap, ' ') + cutTo(title, columns - shown);
  return cutTo(line, columns);
}

}  // namespace playerx::cli
