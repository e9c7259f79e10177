#include "persistence/LegacyQueueDocument.h"

#include <array>
#include <utility>

#include "kvpm/StringTools.h"
#include "persistence/DownloadManagerPersistence.h"
#include "persistence/ItemAttributes.h"

namespace persistence {
namespace {

using kvpm::StringTools;

constexpr const char* kRoot = "DownloadManagerDataContainer";
constexpr const char* kElement = "DownloadManagerVideoElement";
constexpr const char* kVersion = "version";

std::wstring readText(const char* text) {
  return DownloadManagerPersistence::encodedStringToWstring(text);
}

/// Taken as it is: this format has no status that is read back as another.
void readStatus(DownloadItem& item, const char* text) {
  item.setStatus(static_cast<DownloadStatusEnumType>(StringTools::stringToInt32(text)));
}

void readPercentDownloaded(DownloadItem& item, const char* text) {
  item.setPercentDownloaded(StringTools::stringToInt32(text));
}

constexpr std::array<ItemAttribute, 12> kAttributes{{
    {"contentEncryptionUsageID", readContentEncryptionUsageId},
    {"status", readStatus},
    {"fileSize", readFileSize},
    {"title", readTitle<readText>},
    {"ticket", readTicket},
    {"filePath", readFilePath<readText>},
    {"timeRemaining", readTimeRemaining},
    {"contentProviderDisplayName", readContentProviderDisplayName<readText>},
    {"encrypted", readEncrypted},
    {"ticketAlreadyTorn", readTicketAlreadyTorn},
    {"url", readUrl<readText>},
    {"percentDownloaded", readPercentDownloaded, "0"},
}};

}  // namespace

std::optional<ItemList> readLegacyQueueDocument(std::string bytes) {
  return readItems(std::move(bytes), {kRoot, kElement, kVersion, kAttributes});
}

}  // namespace persistence
