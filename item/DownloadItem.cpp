#include "item/DownloadItem.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory_resource>
#include <mutex>
#include <new>
#include <utility>

namespace {

using VeskPlayerX::DownloadItemInterface;

/// Ids name items within one run of the player, whatever thread builds them.
std::uint32_t nextId() {
  static std::atomic<std::uint32_t> lastId{0};
  return ++lastId;
}

std::uint64_t nextVersion() {
  static std::atomic<std::uint64_t> lastVersion{0};
  return lastVersion.fetch_add(1, std::memory_order_relaxed) + 1;
}

#ifndef VESK_ITEMS_APART
/// Memory of items alone, in which they lie side by side. Safe on all threads. Without items it
/// holds nothing.
class ItemMemory {
 public:
  void* take(std::size_t size) {
    const std::lock_guard lock(mutex_);
    void* const memory = pool_.allocate(size);
    ++items_;
    return memory;
  }

  void giveBack(void* memory, std::size_t size) {
    const std::lock_guard lock(mutex_);
    pool_.deallocate(memory, size);
    if (--items_ == 0) pool_.release();
  }

 private:
  std::mutex mutex_;
  std::pmr::unsynchronized_pool_resource pool_;
  std::size_t items_ = 0;
};

/// Never destroyed: the owner of an item may end later.
ItemMemory& itemMemory() {
  alignas(ItemMemory) static std::array<std::byte, sizeof(ItemMemory)> place;
  static ItemMemory* const memory = ::new (place.data()) ItemMemory;
  return *memory;
}
#endif

using SharedName = std::shared_ptr<const std::wstring>;

/// The name, in the memory of an equal one where that is known: a long queue has few providers.
SharedName sharedName(const std::wstring& name) {
  static std::mutex mutex;
  static std::array<std::weak_ptr<const std::wstring>, 64> known;  // by hash
  const std::lock_guard lock(mutex);
  std::weak_ptr<const std::wstring>& place = known[std::hash<std::wstring>()(name) % known.size()];
  SharedName shared = place.lock();
  if (shared == nullptr || *shared != name) shared = std::make_shared<const std::wstring>(name);
  place = shared;
  return shared;
}

/// Copies a text as it is kept, where the source keeps one.
void copy(ItemText& text, const DownloadItemInterface& source,
          const ItemText& (DownloadItem::*kept)() const,
          const std::wstring& (DownloadItemInterface::*wide)() const) {
  if (const DownloadItem* const same = DownloadItem::exactly(source)) {
    text = (same->*kept)();
  } else {
    text = (source.*wide)();
  }
}

}  // namespace

struct DownloadItem::DownloadItemImpl {
  std::uint64_t uid = 0;
  std::uint64_t size = 0;
  std::int32_t percentDownloaded = 0;
  ItemText path;
  ItemText url;
  ItemText title;
  SharedName contentProviderDisplayName;  // null: empty
  std::string ticket;
  std::int32_t ticketId = 0;
  bool encrypted = false;
  bool ticketAlreadyTorn = false;
  bool readyForProgressivePlayback = false;
  bool autoProgressivePlayback = false;
  std::int32_t slotNumber = -1;
  std::uint32_t timeRemaining = 0;
  std::uint32_t lastProgressUpdateTime = 0;
  std::int32_t contentEncryptionUsageId = 0;
  std::atomic<bool>* keysChanged = nullptr;
  std::unique_ptr<KPB::DownloadInfo> downloadInfo;  // few items of a long queue have one
};

/// Sets a field that a queue file keeps or a view shows.
template <class Field, class Value>
void DownloadItem::setKept(Field& field, const Value& value) {
  field = value;
  version_ = nextVersion();
}

void DownloadItem::reportKeyChanges(std::atomic<bool>* changed) { impl_->keysChanged = changed; }

void DownloadItem::reportKeyChange() const {
  if (impl_->keysChanged != nullptr) *impl_->keysChanged = true;
}

DownloadItem::DownloadItem()
    : version_(nextVersion()), id_(nextId()), impl_(std::make_unique<DownloadItemImpl>()) {}

DownloadItem::DownloadItem(const DownloadItemInterface* source) : DownloadItem() {
  impl_->uid = source->getUID();
  status_ = source->getStatus();
  impl_->size = source->getSize();
  impl_->percentDownloaded = source->getPercentDownloaded();
  copy(impl_->path, *source, &DownloadItem::path, &DownloadItemInterface::getPath);
  copy(impl_->url, *source, &DownloadItem::url, &DownloadItemInterface::getUrl);
  impl_->ticket = source->getTicket();
  copy(impl_->title, *source, &DownloadItem::title, &DownloadItemInterface::getTitle);
  impl_->contentProviderDisplayName = sharedName(source->getContentProviderDisplayName());
  impl_->ticketAlreadyTorn = source->getTicketAlreadyTorn();
  impl_->contentEncryptionUsageId =
      static_cast<std::int32_t>(source->getContentEncryptionUsageId());
  impl_->encrypted = source->getEncrypted();
  impl_->readyForProgressivePlayback = source->getReadyForProgressivePlayback();
  impl_->autoProgressivePlayback = source->getAutoProgressivePlayback();
  impl_->slotNumber = source->getSlotNumber();
  impl_->timeRemaining = static_cast<std::uint32_t>(source->getTimeRemaining());
  id_ = source->getId();
  // Asked once more: playback may be requested while the other fields are being copied.
  impl_->autoProgressivePlayback = source->getAutoProgressivePlayback();
}

DownloadItem::~DownloadItem() = default;

const ItemText& DownloadItem::path() const { return impl_->path; }

const ItemText& DownloadItem::url() const { return impl_->url; }

const ItemText& DownloadItem::title() const { return impl_->title; }

#ifdef VESK_ITEMS_APART
void* DownloadItem::operator new(std::size_t size) { return ::operator new(size); }

void DownloadItem::operator delete(void* memory, std::size_t /*size*/) {
  ::operator delete(memory);
}
#else
void* DownloadItem::operator new(std::size_t size) { return itemMemory().take(size); }

void DownloadItem::operator delete(void* memory, std::size_t size) {
  itemMemory().giveBack(memory, size);
}
#endif

unsigned long long DownloadItem::getUID() const { return impl_->uid; }

void DownloadItem::setUID(unsigned long long uid) { impl_->uid = uid; }

unsigned int DownloadItem::getId() const { return id_; }

void DownloadItem::setId(unsigned int id) {
  id_ = id;
  reportKeyChange();
}

const std::wstring& DownloadItem::getPath() const { return impl_->path.wide(); }

void DownloadItem::setPath(const std::wstring& path) { setKept(impl_->path, path); }

const std::wstring& DownloadItem::getUrl() const { return impl_->url.wide(); }

void DownloadItem::setUrl(const std::wstring& url) {
  setKept(impl_->url, url);
  reportKeyChange();
}

unsigned long long DownloadItem::getSize() const { return impl_->size; }

void DownloadItem::setSize(unsigned long long size) { setKept(impl_->size, size); }

int DownloadItem::getPercentDownloaded() const { return impl_->percentDownloaded; }

void DownloadItem::setPercentDownloaded(int percent) { setKept(impl_->percentDownloaded, percent); }

const std::wstring& DownloadItem::getTitle() const { return impl_->title.wide(); }

void DownloadItem::setTitle(const std::wstring& title) { setKept(impl_->title, title); }

DownloadStatusEnumType DownloadItem::getStatus() const { return status_; }

void DownloadItem::setStatus(DownloadStatusEnumType status) {
  if (status_ != DownloadStatusCompleted) setKept(status_, status);
}

std::wstring DownloadItem::getContentProviderDisplayName() const {
  const SharedName& name = impl_->contentProviderDisplayName;
  return name != nullptr ? *name : std::wstring();
}

void DownloadItem::setContentProviderDisplayName(const std::wstring& name) {
  setKept(impl_->contentProviderDisplayName, sharedName(name));
}

long DownloadItem::getContentEncryptionUsageId() const { return impl_->contentEncryptionUsageId; }

void DownloadItem::setContentEncryptionUsageId(long id) {
  setKept(impl_->contentEncryptionUsageId, static_cast<std::int32_t>(id));
}

const std::string& DownloadItem::getTicket() const { return impl_->ticket; }

void DownloadItem::setTicket(const std::string& ticket) { setKept(impl_->ticket, ticket); }

long DownloadItem::getTicketId() const { return impl_->ticketId; }

void DownloadItem::setTicketId(long id) { impl_->ticketId = static_cast<std::int32_t>(id); }

bool DownloadItem::getTicketAlreadyTorn() const { return impl_->ticketAlreadyTorn; }

void DownloadItem::setTicketAlreadyTorn(bool torn) { setKept(impl_->ticketAlreadyTorn, torn); }

bool DownloadItem::getEncrypted() const { return impl_->encrypted; }

void DownloadItem::setEncrypted(bool encrypted) { setKept(impl_->encrypted, encrypted); }

int DownloadItem::getSlotNumber() const { return impl_->slotNumber; }

void DownloadItem::setSlotNumber(int slot) { impl_->slotNumber = slot; }

bool DownloadItem::getReadyForProgressivePlayback() const {
  return impl_->readyForProgressivePlayback;
}

void DownloadItem::setReadyForProgressivePlayback(bool ready) {
  setKept(impl_->readyForProgressivePlayback, ready);
}

bool DownloadItem::getAutoProgressivePlayback() const { return impl_->autoProgressivePlayback; }

void DownloadItem::setAutoProgressivePlayback(bool automatic) {
  impl_->autoProgressivePlayback = automatic;
}

unsigned long DownloadItem::getTimeRemaining() const { return impl_->timeRemaining; }

void DownloadItem::setTimeRemaining(unsigned long seconds) {
  setKept(impl_->timeRemaining, static_cast<std::uint32_t>(seconds));
}

unsigned long DownloadItem::getLastProgressUpdateTime() const {
  return impl_->lastProgressUpdateTime;
}

void DownloadItem::setLastProgressUpdateTime(unsigned long seconds) {
  impl_->lastProgressUpdateTime = static_cast<std::uint32_t>(seconds);
}

KPB::DownloadInfo DownloadItem::getDownloadInfo() const {
  return impl_->downloadInfo ? *impl_->downloadInfo : KPB::DownloadInfo();
}

void DownloadItem::setDownloadInfo(KPB::DownloadInfo info) {
  impl_->downloadInfo = std::make_unique<KPB::DownloadInfo>(std::move(info));
}
