#include "persistence/ItemAttributes.h"

#include <algorithm>

#include "kvpm/StringTools.h"

namespace persistence {
namespace {

using kvpm::StringTools;
using Item = VeskPlayerX::DownloadItemInterface;

/// A signed value as an unsigned one of 64 bits: -1 becomes 18446744073709551615.
std::uint64_t signExtended(std::int32_t value) {
  return static_cast<std::uint64_t>(std::int64_t{value});
}

std::int32_t int32Of(std::string_view value) {
  return StringTools::stringToInt32(std::string(value));
}

std::uint64_t uint64Of(std::string_view value) {
  return StringTools::stringToUint64(std::string(value));
}

bool flagOf(std::string_view value) { return StringTools::stringToBool(std::string(value)); }

/// Gives a text as it is kept.
void giveText(const Item& item, const ItemText& (DownloadItem::*kept)() const,
              const std::wstring& (Item::*wide)() const, FieldSink& sink) {
  const DownloadItem* const own = DownloadItem::exactly(item);
  const auto ascii = own != nullptr ? (own->*kept)().ascii() : std::nullopt;
  if (ascii) {
    sink.takeBytes(*ascii);
  } else {
    sink.takeText((item.*wide)());
  }
}

constexpr std::array<ItemAttribute, 12> kTable{{
    {"title",
     [](const Item& item, FieldSink& sink) {
       giveText(item, &DownloadItem::title, &Item::getTitle, sink);
     },
     [](std::string_view value, const Spelling& spelling, DownloadItem& item) {
       item.setTitle(spelling.text(value));
     }},
    {"contentEncryptionUsageID",
     [](const Item& item, FieldSink& sink) {
       sink.takeUnsigned(
           signExtended(static_cast<std::int32_t>(item.getContentEncryptionUsageId())));
     },
     [](std::string_view value, const Spelling& /*spelling*/, DownloadItem& item) {
       item.setContentEncryptionUsageId(int32Of(value));
     }},
    {"status", [](const Item& item, FieldSink& sink) { sink.takeSigned(item.getStatus()); },
     [](std::string_view value, const Spelling& spelling, DownloadItem& item) {
       item.setStatus(spelling.status(int32Of(value)));
     }},
    {"fileSize", [](const Item& item, FieldSink& sink) { sink.takeUnsigned(item.getSize()); },
     [](std::string_view value, const Spelling& /*spelling*/, DownloadItem& item) {
       item.setSize(uint64Of(value));
     }},
    {"percentDownloaded",
     [](const Item& item, FieldSink& sink) {
       sink.takeUnsigned(signExtended(item.getPercentDownloaded()));
     },
     [](std::string_view value, const Spelling& /*spelling*/, DownloadItem& item) {
       item.setPercentDownloaded(static_cast<std::int32_t>(uint64Of(value)));
     }},
    {"filePath",
     [](const Item& item, FieldSink& sink) {
       giveText(item, &DownloadItem::path, &Item::getPath, sink);
     },
     [](std::string_view value, const Spelling& spelling, DownloadItem& item) {
       item.setPath(spelling.text(value));
     }},
    {"ticket", [](const Item& item, FieldSink& sink) { sink.takeBytes(item.getTicket()); },
     [](std::string_view value, const Spelling& /*spelling*/, DownloadItem& item) {
       item.setTicket(std::string(value));
     }},
    {"timeRemaining",
     [](const Item& item, FieldSink& sink) {
       sink.takeSigned(static_cast<std::int32_t>(item.getTimeRemaining()));
     },
     [](std::string_view value, const Spelling& /*spelling*/, DownloadItem& item) {
       item.setTimeRemaining(static_cast<std::uint32_t>(uint64Of(value)));
     }},
    {"contentProviderDisplayName",
     [](const Item& item, FieldSink& sink) { sink.takeText(item.getContentProviderDisplayName()); },
     [](std::string_view value, const Spelling& spelling, DownloadItem& item) {
       item.setContentProviderDisplayName(spelling.text(value));
     }},
    {"encrypted", [](const Item& item, FieldSink& sink) { sink.takeFlag(item.getEncrypted()); },
     [](std::string_view value, const Spelling& /*spelling*/, DownloadItem& item) {
       item.setEncrypted(flagOf(value));
     }},
    {"ticketAlreadyTorn",
     [](const Item& item, FieldSink& sink) { sink.takeFlag(item.getTicketAlreadyTorn()); },
     [](std::string_view value, const Spelling& /*spelling*/, DownloadItem& item) {
       item.setTicketAlreadyTorn(flagOf(value));
     }},
    {"url",
     [](const Item& item, FieldSink& sink) {
       giveText(item, &DownloadItem::url, &Item::getUrl, sink);
     },
     [](std::string_view value, const Spelling& spelling, DownloadItem& item) {
       item.setUrl(spelling.text(value));
     }},
}};

static_assert(std::all_of(kTable.begin(), kTable.end(),
                          [](const ItemAttribute& row) { return row.write && row.read; }));

}  // namespace

constinit const std::array<ItemAttribute, 12> kItemAttributes = kTable;

}  // namespace persistence
