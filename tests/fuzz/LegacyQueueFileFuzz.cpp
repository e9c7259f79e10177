// Input: the content of an earlier release's queue file.
#include "persistence/ItemList.h"
#include "persistence/LegacyQueueDocument.h"
#include "persistence/QueueDocument.h"
#include "persistence/WrittenQueue.h"
#include "tests/fuzz/Fuzz.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto items = persistence::readLegacyQueueDocument(fuzz::textOf(data, size));
  if (!items) return 0;
  std::vector<VeskPlayerX::DownloadItemInterface*> queue;
  for (const auto& item : *items) queue.push_back(item.get());
  const auto document = persistence::WrittenQueue{}.document(queue);
  fuzz::require(document.has_value(), "what is taken over can be written");
  const auto back = persistence::readQueueDocument(*document);
  fuzz::require(back.has_value(), "what is taken over can be read again");
  fuzz::require(back->size() == items->size(), "no item is lost");
  return 0;
}
