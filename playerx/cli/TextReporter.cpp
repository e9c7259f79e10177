#include <algorithm>
#include <map>
#include <ostream>

#include "playerx/app/model/TextFormat.h"
#include "playerx/cli/Reporter.h"
#include "playerx/cli/TerminalText.h"

namespace playerx::cli {

using model::formatBytes;
using model::formatDuration;
using model::ItemState;
using reasons::Explanation;

namespace {

constexpr int kBarWidth = 24;
constexpr std::size_t kShortestTitle = 10;

std::string nameOf(const ItemState& item) {
  return printable(item.title.empty() ? item.url : item.title);
}

std::string sizeNote(const ItemState& item) {
  return item.size == 0 ? "" : " (" + formatBytes(item.size) + ")";
}

class LineReporter : public Reporter {
 public:
  LineReporter(std::ostream& out, std::ostream& notes) : out_(out), notes_(notes) {}

  void added(const ItemState& item) override { stateLine(item); }

  void changed(const ItemState& item, std::uint64_t) override { stateLine(item); }

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

  void listed(int position, const ItemState& item) override {
    out_ << position << ". " << model::statusWord(item.status) << ' ' << item.percent << " % "
         << nameOf(item) << sizeNote(item);
    if (!item.provider.empty()) out_ << ", " << printable(item.provider);
    if (!item.path.empty()) out_ << " -> " << printable(item.path);
    out_ << std::endl;
  }

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

/// The part of the live line after the title.
std::string progressOf(const ItemState& item, std::uint64_t bytesPerSecond) {
  std::string text =
      progressBar(item.percent, kBarWidth) + " " + std::to_string(item.percent) + " %";
  if (item.size > 0) text += "  " + formatBytes(item.size);
  if (bytesPerSecond > 0) text += "  " + formatBytes(bytesPerSecond) + "/s";
  const std::string remaining = formatDuration(item.secondsRemaining);
  if (!remaining.empty()) text += "  " + remaining + " left";
  return text;
}

class LiveReporter : public LineReporter {
 public:
  LiveReporter(std::ostream& out, std::ostream& notes, int columns)
      : LineReporter(out, notes), columns_(static_cast<std::size_t>(std::max(columns, 20))) {}

  ~LiveReporter() override { erase(); }

  void added(const ItemState& item) override {
    erase();
    LineReporter::added(item);
  }

  void changed(const ItemState& item, std::uint64_t bytesPerSecond) override {
    if (item.status != DownloadStatusDownloading && item.status != DownloadStatusStarting) return;
    const std::string progress = progressOf(item, bytesPerSecond);
    const std::size_t used = progress.size() + 2;
    const std::size_t room = columns_ > used ? columns_ - used : 0;
    const std::string line = cutTo(nameOf(item), std::max(room, kShortestTitle)) + "  " + progress;
    out_ << "\r\033[K" << cutTo(line, columns_ - 1) << std::flush;
    live_ = true;
  }

  void finished(const ItemState& item, const std::string& oddity) override {
    erase();
    LineReporter::finished(item, oddity);
  }

  void failed(const ItemState& item, const Explanation& reason) override {
    erase();
    LineReporter::failed(item, reason);
  }

  void note(const std::string& sentence) override {
    erase();
    LineReporter::note(sentence);
  }

 private:
  void erase() {
    if (live_) out_ << "\r\033[K" << std::flush;
    live_ = false;
  }

  const std::size_t columns_;
  bool live_ = false;
};

}  // namespace

std::unique_ptr<Reporter> makeLineReporter(std::ostream& out, std::ostream& notes) {
  return std::make_unique<LineReporter>(out, notes);
}

std::unique_ptr<Reporter> makeLiveReporter(std::ostream& out, std::ostream& notes, int columns) {
  return std::make_unique<LiveReporter>(out, notes, columns);
}

}  // namespace playerx::cli
