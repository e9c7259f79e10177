#include "playerx/app/session/SavedQueue.h"

#include <QFile>
#include <QXmlStreamReader>
#include <algorithm>
#include <filesystem>
#include <system_error>

#include "VeskPlayerX/DownloadManagerInterface.h"
#include "playerx/platform/FileIo.h"
#include "playerx/platform/ReplacementFile.h"

namespace playerx {

namespace {

/// What the next change may add to the file.
constexpr std::size_t kRoomToGrow = 4096;

SavedItem itemOf(const QXmlStreamAttributes& attributes) {
  // Negative percentages are written as unsigned numbers of 64 bits.
  return {attributes.value("status").toInt(),
          static_cast<int>(attributes.value("percentDownloaded").toULongLong()),
          attributes.value("fileSize").toULongLong(),
          attributes.value("url").toUtf8().toStdString()};
}

bool isPlain(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < '\x7f'; });
}

bool isSame(const SavedItem& saved, const ItemState& item) {
  return saved.status == item.status && saved.percent == item.percent && saved.size == item.size &&
         (!isPlain(item.url) || saved.url == item.url);
}

std::string wordsOf(int error) {
  return error == 0 ? "writing failed" : std::generic_category().message(error);
}

}  // namespace

std::optional<std::vector<SavedItem>> savedItems(const QByteArray& content) {
  std::vector<SavedItem> items;
  QXmlStreamReader reader(content);
  if (!reader.readNextStartElement() || reader.name() != u"DownloadQueue") return std::nullopt;
  while (reader.readNextStartElement()) {
    if (reader.name() == u"DownloadItem") items.push_back(itemOf(reader.attributes()));
    reader.skipCurrentElement();
  }
  if (reader.hasError()) return std::nullopt;
  return items;
}

bool holds(const std::vector<SavedItem>& saved, const std::vector<ItemState>& queue) {
  return std::equal(saved.begin(), saved.end(), queue.begin(), queue.end(), isSame);
}

SavedQueue::SavedQueue(const std::string& folder) : file_(folder + "/downloadmanager.xml") {}

std::string SavedQueue::obstacle() const {
  const int error = tryToReplace();
  if (error == 0) return {};
  return "The queue file " + file_ + " cannot be written (" + wordsOf(error) +
         "); free some space or make it writable, or choose another folder with --data.";
}

std::string SavedQueue::loss(VeskPlayerX::DownloadManagerInterface& manager) const {
  // The module may still be putting the last item in its place; a queue that stayed the same
  // meanwhile has been written as it is, or not at all.
  std::vector<ItemState> queue = snapshotOf(manager);
  for (;;) {
    if (holdsNow(queue)) return {};
    // Telling an item what it knows changes nothing, and is written like any change.
    if (!queue.empty()) manager.setPlayable(queue.back().id, queue.back().playable);
    if (holdsNow(queue)) return {};
    std::vector<ItemState> later = snapshotOf(manager);
    if (later == queue) break;
    queue = std::move(later);
  }
  return "The queue file " + file_ + " does not hold the last changes (" + wordsOf(tryToReplace()) +
         "); free some space or make it writable, then run the command again.";
}

/// Returns 0 or the error number (`errno` values) with which it failed.
int SavedQueue::tryToReplace() const {
  int error = 0;
  const std::unique_ptr<ReplacementFile> trial = ReplacementFile::create(file_, error);
  if (trial == nullptr) return error;
  std::error_code isMissing;
  const std::uintmax_t size = std::filesystem::file_size(file_, isMissing);
  const std::string filling((isMissing ? 0 : size) + kRoomToGrow, ' ');
  return writeFully(trial->descriptor(), filling.data(), filling.size()).error;
}

bool SavedQueue::holdsNow(const std::vector<ItemState>& queue) const {
  QFile file(QString::fromStdString(file_));
  if (!file.open(QIODevice::ReadOnly)) return false;
  const auto saved = savedItems(file.readAll());
  return saved && holds(*saved, queue);
}

}  // namespace playerx
