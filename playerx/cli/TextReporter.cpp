#include <map>
#include <ostream>
#include <utility>

#include "playerx/app/model/TextFormat.h"
#include "playerx/cli/LiveLine.h"
#include "playerx/cli/Reporter.h"
#include "playerx/cli/TerminalText.h"

namespace playerx::cli {

using model::formatBytes;
using model::ItemState;
using model::Progress;
using model::QueueProgress;
using reasons::Explanation;

namespace {

std::string nameOf(const ItemState& item) { return printable(displayName(item)); }

std::string sizeNote(const ItemState& item) {
  return item.size == 0 ? "" : " (" + formatBytes(item.size) + ")";
}

std::string paceNote(const Progress& progress) {
  std::string text;
  if (progress.silentSeconds > 0) {
    return ", nothing for " + model::formatDuration(progress.silentSeconds);
  }
  if (progress.bytesPerSecond > 0) text += ", " + formatBytes(progress.bytesPerSecond) + "/s";
  if (progress.secondsLeft) text += ", " + model::formatDuration(*progress.secondsLeft) + " left";
  return text;
}

/// "2 of 7 complete, 1.3 GB of 4.0 GB and one film of unknown size"
std::string sentenceOf(const QueueProgress& queue) {
  std::string text =
      std::to_string(queue.completed) + " of " + std::to_string(queue.items) + " complete";
  const bool isAnyKnown = queue.total > 0;
  if (isAnyKnown) text += ", " + formatBytes(queue.arrived) + " of " + formatBytes(queue.total);
  if (queue.unknownSizes > 0) {
    text += (isAnyKnown ? " and " : ", ") + model::formatCount(queue.unknownSizes, "film") +
            " of unknown size";
  }
  return queue.isPaused ? text + "; the queue is paused" : text;
}

class LineReporter : public Reporter {
 public:
  LineReporter(std::ostream& out, std::ostream& notes) : out_(out), notes_(notes) {}

  void added(const ItemState& item) override { stateLine(item); }

  void changed(const ItemState& item, const Progress&) override { stateLine(item); }

  void finished(const ItemState& item, const std::string& oddity) override {
    forget(item);
    out_ << "completed: " << nameOf(item) << sizeNote(item) << " -> " << printable(item.path)
         << std::endl;
    if (!oddity.empty()) note(oddity);
  }

  void failed(const ItemState& item, const Explanation& reason) override {
    forget(item);
    notes_ << "failed: " << nameOf(item) << ": " << printable(reason.sentence()) << std::endl;
  }

  void refused(const std::string& argument, const Explanation& reason) override {
    notes_ << printable(argument) << ": " << printable(reason.sentence()) << std::endl;
  }

  void listed(const Listing& listing) override {
    const ItemState& item = listing.item;
    // As a whole: a long queue has many, and a stream takes long for each piece.
    std::string text = std::to_string(listing.position) + ". " + model::statusWord(item.status) +
                       ' ' + std::to_string(item.percent) + " % " + nameOf(item) + sizeNote(item) +
                       paceNote(listing.progress);
    if (!item.provider.empty()) text += ", " + printable(item.provider);
    // A film that has failed is not at the place that was chosen for it.
    const bool hasPlace = !item.path.empty() && item.status != DownloadStatusFailed;
    if (hasPlace) text += " -> " + printable(item.path);
    if (listing.reason) text += "\n   " + printable(listing.reason->sentence());
    if (!listing.oddity.empty()) text += "\n   " + printable(listing.oddity);
    if (listing.isLong && !item.url.empty()) text += "\n   " + printable(item.url);
    out_ << text << '\n';  // `listedAll` flushes
  }

  void listedAll(const QueueProgress& queue) override { out_ << sentenceOf(queue) << std::endl; }

  void queueProgress(const QueueProgress&) override {}

  void done(const std::string& sentence) override { out_ << printable(sentence) << std::endl; }

  void note(const std::string& sentence) override { notes_ << printable(sentence) << std::endl; }

 protected:
  std::ostream& out_;
  std::ostream& notes_;

 private:
  void stateLine(const ItemState& item) {
    if (!model::isUnfinished(item.status)) return;
    const auto [shown, isNew] = shown_.emplace(item.id, item.status);
    if (!isNew && shown->second == item.status) return;
    shown->second = item.status;
    out_ << model::statusWord(item.status) << ": " << nameOf(item) << sizeNote(item) << std::endl;
  }

  void forget(const ItemState& item) { shown_.erase(item.id); }

  std::map<unsigned int, DownloadStatusEnumType> shown_;
};

class LiveReporter : public LineReporter {
 public:
  LiveReporter(std::ostream& out, std::ostream& notes, std::function<int()> columns)
      : LineReporter(out, notes), columns_(std::move(columns)) {}

  ~LiveReporter() override { erase(); }

  void added(const ItemState& item) override {
    erase();
    LineReporter::added(item);
  }

  void changed(const ItemState& item, const Progress& progress) override {
    const int columns = columns_();
    const bool isArriving =
        item.status == DownloadStatusDownloading || item.status == DownloadStatusStarting;
    const bool isAsked = progress.silentSeconds > 0;
    if ((!isArriving && !isAsked) || columns < 2) return;
    // A character in the last column has some terminals begin another line.
    const auto room = static_cast<std::size_t>(columns - 1);
    out_ << "\r\033[K" << liveLine(item, progress, queue_, room) << std::flush;
    isLive_ = true;
  }

  void finished(const ItemState& item, const std::string& oddity) override {
    erase();
    LineReporter::finished(item, oddity);
  }

  void failed(const ItemState& item, const Explanation& reason) override {
    erase();
    LineReporter::failed(item, reason);
  }

  void refused(const std::string& argument, const Explanation& reason) override {
    erase();
    LineReporter::refused(argument, reason);
  }

  void queueProgress(const QueueProgress& queue) override { queue_ = queue; }

  void note(const std::string& sentence) override {
    erase();
    LineReporter::note(sentence);
  }

 private:
  void erase() {
    if (isLive_) out_ << "\r\033[K" << std::flush;
    isLive_ = false;
  }

  const std::function<int()> columns_;
  QueueProgress queue_;
  bool isLive_ = false;
};

}  // namespace

std::unique_ptr<Reporter> makeLineReporter(std::ostream& out, std::ostream& notes) {
  return std::make_unique<LineReporter>(out, notes);
}

std::unique_ptr<Reporter> makeLiveReporter(std::ostream& out, std::ostream& notes,
                                           std::function<int()> columns) {
  return std::make_unique<LiveReporter>(out, notes, std::move(columns));
}

}  // namespace playerx::cli
