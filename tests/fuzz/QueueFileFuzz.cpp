// Input: a queue file's content, and the same bytes as the texts of an item to be kept.
#include <cstring>

#include "item/DownloadItem.h"
#include "persistence/ItemList.h"
#include "persistence/QueueDocument.h"
#include "persistence/QueueText.h"
#include "persistence/XmlText.h"
#include "tests/fuzz/Fuzz.h"

namespace {

using persistence::ItemList;
using persistence::QueueFormat;

std::string written(const ItemList& items) {
  std::vector<VeskPlayerX::DownloadItemInterface*> queue;
  for (const auto& item : items) queue.push_back(item.get());
  persistence::QueueText document;
  document.update(queue);
  return std::string(document.text());
}

ItemList readBack(const std::string& document, std::size_t count) {
  auto [outcome, items] = persistence::readQueueDocument(document, QueueFormat::kCurrent);
  fuzz::require(persistence::formatOf(document) != QueueFormat::kUnknown, "its form is known");
  fuzz::require(outcome == persistence::QueueOutcome::kRead, "what is written can be read");
  fuzz::require(items.size() == count, "no item is lost");
  return std::move(items);
}

std::wstring wideTextOf(const std::string& bytes) {
  std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
  std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
  return text;
}

void keepAsTexts(const std::string& input) {
  ItemList items;
  for (int i = 0; i < 2; ++i) items.push_back(std::make_unique<DownloadItem>());
  const std::wstring wide = wideTextOf(input);
  items[0]->setTicket(input);
  items[0]->setTitle(wide);
  items[1]->setUrl(L"neighbour");
  const ItemList back = readBack(written(items), items.size());
  fuzz::require(back[0]->getTicket() == persistence::carriedByXml(input), "tickets are carried");
  fuzz::require(back[0]->getTitle() == persistence::carriedByXml(wide), "titles are carried");
  fuzz::require(back[1]->getUrl() == L"neighbour", "neighbours do not suffer");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input = fuzz::textOf(data, size);
  const auto [outcome, items] = persistence::readQueueDocument(input, QueueFormat::kCurrent);
  if (outcome == persistence::QueueOutcome::kRead) {
    const std::string document = written(items);
    fuzz::require(written(readBack(document, items.size())) == document, "a queue keeps");
  }
  keepAsTexts(input);
  return 0;
}
