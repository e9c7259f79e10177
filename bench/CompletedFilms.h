#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "item/DownloadItem.h"

namespace bench {

/// A queue of completed films, as a long one usually is.
class CompletedFilms {
 public:
  static constexpr std::int64_t kFirstNumber = 1'000'000;  ///< in the first film's name

  using Items = std::vector<VeskPlayerX::DownloadItemInterface*>;

  explicit CompletedFilms(std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i) {
      owned_.push_back(film(std::to_wstring(kFirstNumber + i)));
      items_.push_back(owned_.back().get());
    }
  }

  const Items& items() const { return items_; }

 private:
  static std::unique_ptr<DownloadItem> film(const std::wstring& number) {
    auto item = std::make_unique<DownloadItem>();
    const std::wstring name = L"film-" + number + L".avi";
    item->setTitle(name);
    item->setUrl(L"http://media.example/films/" + name);
    item->setPath(L"/home/somebody/films/" + name);
    item->setContentProviderDisplayName(L"media.example");
    item->setSize(10'240);
    item->setPercentDownloaded(100);
    item->setStatus(DownloadStatusCompleted);
    return item;
  }

  std::vector<std::unique_ptr<DownloadItem>> owned_;
  Items items_;
};

}  // namespace bench
