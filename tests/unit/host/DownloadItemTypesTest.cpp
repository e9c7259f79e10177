#include <string>
#include <type_traits>

#include "VeskPlayerX/DownloadItemInterface.h"

namespace {

using Item = VeskPlayerX::DownloadItemInterface;

/// Whether `operation` has exactly this type: what goes in and out by reference, what by value.
template <class Type, class Operation>
constexpr bool has(Operation) {
  return std::is_same_v<Type, Operation>;
}

static_assert(has<unsigned long long (Item::*)() const>(&Item::getUID));
static_assert(has<void (Item::*)(unsigned long long)>(&Item::setUID));
static_assert(has<unsigned int (Item::*)() const>(&Item::getId));
static_assert(has<void (Item::*)(unsigned int)>(&Item::setId));
static_assert(has<const std::wstring& (Item::*)() const>(&Item::getPath));
static_assert(has<void (Item::*)(const std::wstring&)>(&Item::setPath));
static_assert(has<const std::wstring& (Item::*)() const>(&Item::getUrl));
static_assert(has<void (Item::*)(const std::wstring&)>(&Item::setUrl));
static_assert(has<unsigned long long (Item::*)() const>(&Item::getSize));
static_assert(has<void (Item::*)(unsigned long long)>(&Item::setSize));
static_assert(has<int (Item::*)() const>(&Item::getPercentDownloaded));
static_assert(has<void (Item::*)(int)>(&Item::setPercentDownloaded));
static_assert(has<const std::wstring& (Item::*)() const>(&Item::getTitle));
static_assert(has<void (Item::*)(const std::wstring&)>(&Item::setTitle));
static_assert(has<DownloadStatusEnumType (Item::*)() const>(&Item::getStatus));
static_assert(has<void (Item::*)(DownloadStatusEnumType)>(&Item::setStatus));
static_assert(has<std::wstring (Item::*)() const>(&Item::getContentProviderDisplayName));
static_assert(has<void (Item::*)(const std::wstring&)>(&Item::setContentProviderDisplayName));
static_assert(has<long (Item::*)() const>(&Item::getContentEncryptionUsageId));
static_assert(has<void (Item::*)(long)>(&Item::setContentEncryptionUsageId));
static_assert(has<const std::string& (Item::*)() const>(&Item::getTicket));
static_assert(has<void (Item::*)(const std::string&)>(&Item::setTicket));
static_assert(has<long (Item::*)() const>(&Item::getTicketId));
static_assert(has<void (Item::*)(long)>(&Item::setTicketId));
static_assert(has<bool (Item::*)() const>(&Item::getTicketAlreadyTorn));
static_assert(has<void (Item::*)(bool)>(&Item::setTicketAlreadyTorn));
static_assert(has<bool (Item::*)() const>(&Item::getEncrypted));
static_assert(has<void (Item::*)(bool)>(&Item::setEncrypted));
static_assert(has<int (Item::*)() const>(&Item::getSlotNumber));
static_assert(has<void (Item::*)(int)>(&Item::setSlotNumber));
static_assert(has<bool (Item::*)() const>(&Item::getReadyForProgressivePlayback));
static_assert(has<void (Item::*)(bool)>(&Item::setReadyForProgressivePlayback));
static_assert(has<bool (Item::*)() const>(&Item::getAutoProgressivePlayback));
static_assert(has<void (Item::*)(bool)>(&Item::setAutoProgressivePlayback));
static_assert(has<unsigned long (Item::*)() const>(&Item::getTimeRemaining));
static_assert(has<void (Item::*)(unsigned long)>(&Item::setTimeRemaining));
static_assert(has<unsigned long (Item::*)() const>(&Item::getLastProgressUpdateTime));
static_assert(has<void (Item::*)(unsigned long)>(&Item::setLastProgressUpdateTime));
static_assert(has<KPB::DownloadInfo (Item::*)() const>(&Item::getDownloadInfo));
static_assert(has<void (Item::*)(KPB::DownloadInfo)>(&Item::setDownloadInfo));

}  // namespace
