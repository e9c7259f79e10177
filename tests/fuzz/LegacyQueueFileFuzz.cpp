// Input: the content of an earlier release's queue file.
#include "persistence/QueueDocument.h"
#include "persistence/QueueText.h"
#include "tests/fuzz/Fuzz.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace persistence;
  const auto [outcome, items] = readQueueDocument(fuzz::textOf(data, size), QueueFormat::kLegacy);
  if (outcome != QueueOutcome::kRead) return 0;
  std::vector<VeskPlayerX::DownloadItemInterface*> queue;
  for (const auto& item : items) queue.push_back(item.get());
  QueueText document;
  document.update(queue);
  const QueueReading back = readQueueDocument(document.text(), QueueFormat::kCurrent);
  fuzz::require(back.outcome == QueueOutcome::kRead, "what is imported can be read again");
  fuzz::require(back.items.size() == items.size(), "no item is lost");
  return 0;
}
