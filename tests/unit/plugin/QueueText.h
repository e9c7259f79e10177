#pragma once

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "item/DownloadItem.h"
#include "kvpm/StringTools.h"

/// Queues as short texts: "A1 B4" is a queued item titled A above a completed one titled B.
namespace queue_text {

using Item = VeskPlayerX::DownloadItemInterface;

inline std::unique_ptr<DownloadItem> makeItem(const std::string& word) {
  auto item = std::make_unique<DownloadItem>();
  item->setTitle(kvpm::StringTools::stringToWString(word.substr(0, word.size() - 1)));
  item->setStatus(static_cast<DownloadStatusEnumType>(word.back() - '0'));
  return item;
}

/// The items belong to the caller.
inline std::vector<Item*> makeItems(const std::string& text) {
  std::vector<Item*> items;
  std::istringstream words(text);
  for (std::string word; words >> word;) items.push_back(makeItem(word).release());
  return items;
}

inline std::string titleOf(const Item& item) {
  return kvpm::StringTools::wStringToString(item.getTitle());
}

inline std::string textOf(const std::vector<Item*>& items) {
  std::string text;
  for (const Item* const item : items) {
    text += (text.empty() ? "" : " ") + titleOf(*item) + std::to_string(item->getStatus());
  }
  return text;
}

}  // namespace queue_text
