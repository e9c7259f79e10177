#include "persistence/WrittenQueue.h"

#include <utility>

#include "persistence/QueueDocument.h"

namespace persistence {

using VeskPlayerX::DownloadItemInterface;

WrittenQueue::Fields::Fields(const DownloadItemInterface& item, std::size_t limit)
    : title(item.getTitle()),
      path(item.getPath()),
      provider(item.getContentProviderDisplayName()),
      url(item.getUrl()),
      ticket(item.getTicket()),
      size(item.getSize()),
      usageId(item.getContentEncryptionUsageId()),
      timeRemaining(item.getTimeRemaining()),
      status(item.getStatus()),
      percent(item.getPercentDownloaded()),
      encrypted(item.getEncrypted()),
      torn(item.getTicketAlreadyTorn()),
      limit(limit) {}

std::optional<std::string> WrittenQueue::document(
    const std::vector<DownloadItemInterface*>& items) {
  if (items.empty()) return std::exchange(elements_, {}), std::string(kEmptyQueueDocument);
  const std::size_t limit = longestValueIn(items);
  Elements kept;
  kept.reserve(items.size());
  std::string text(kQueueBeginning);
  for (const DownloadItemInterface* item : items) {
    const std::string* const element = elementOf(*item, limit, kept);
    if (element == nullptr) return std::nullopt;
    text += *element;
  }
  elements_ = std::move(kept);
  return text += kQueueEnd;
}

/// The item's element, remembered or written, which moves to `kept`; null when it cannot be
/// written.
const std::string* WrittenQueue::elementOf(const DownloadItemInterface& item, std::size_t limit,
                                           Elements& kept) {
  Fields fields(item, limit);
  auto known = elements_.extract(item.getId());
  if (!known.empty() && known.mapped().fields == fields) {
    return &kept.insert(std::move(known)).position->second.text;
  }
  std::optional<std::string> text = writeQueueElement(item, limit);
  if (!text) return nullptr;
  Element element{std::move(fields), *std::move(text)};
  return &kept.insert_or_assign(item.getId(), std::move(element)).first->second.text;
}

}  // namespace persistence
