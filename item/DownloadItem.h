#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <typeinfo>

#include "VeskPlayerX/DownloadItemInterface.h"
#include "VeskPlayerX/DownloadStatus.h"
#include "VeskPlayerX/QueueReaderInterface.h"
#include "item/ItemText.h"

/// One entry of the download queue: a film to fetch, where it goes and how far it has got.
///
/// An item is deleted by its owner; the queue owns the items it holds. An item has no lock of its
/// own: several threads may read one, or one may write it, and those that share it see to that.
/// What all items share, the counters behind their ids and versions, is safe on all threads.
/// Nothing but allocation fails.
class DownloadItem : public VeskPlayerX::DownloadItemInterface {
 public:
  /// A queued item with the next id, the first one being 1, and nothing known about its film.
  DownloadItem();

  /// An independent copy for the worker or a view. It has the id of `source`, though an id of its
  /// own was used up. Ticket id, time of the last progress report and download info start anew, so
  /// that a copy neither confirms a download nor estimates time by itself.
  explicit DownloadItem(const VeskPlayerX::DownloadItemInterface* source);

  ~DownloadItem() override;

  // Items lie side by side in memory, in the order in which they are made: every save and every
  // look goes through the whole queue.

  static void* operator new(std::size_t size);
  static void operator delete(void* memory, std::size_t size);

  /// Stands for what a queue file keeps of the item, or a view shows: every set of such a field
  /// gives a new number, above 0, that no item has had before.
  std::uint64_t version() const { return version_; }

  /// The item as one of this class; null for one of another class, derived ones included: it could
  /// answer with fields that are not the item's.
  static const DownloadItem* exactly(const VeskPlayerX::DownloadItemInterface& item) {
    return typeid(item) == typeid(DownloadItem) ? static_cast<const DownloadItem*>(&item) : nullptr;
  }

  /// The version of any item; 0 for one of another class.
  ///
  /// Inline because every save asks each item of the queue.
  static std::uint64_t versionOf(const VeskPlayerX::DownloadItemInterface& item) {
    if (typeid(item) != typeid(DownloadItem)) return 0;
    return static_cast<const DownloadItem&>(item).version();
  }

  /// What a view asks of any item of the queue at each look.
  ///
  /// Inline, and not virtual for an item of this class, because a look asks it of each item.
  static VeskPlayerX::QueuedVersion queuedVersionOf(
      const VeskPlayerX::DownloadItemInterface& item) {
    const DownloadItem* const own = exactly(item);
    if (own == nullptr) return {item.getId(), item.getStatus(), 0};
    return {own->id_, own->status_, own->version()};
  }

  // The texts as they are kept. For what goes through a whole queue, which takes far more memory
  // once its texts were asked for as wide ones.

  const ItemText& path() const;
  const ItemText& url() const;
  const ItemText& title() const;

  /// Has `changed` set, from now on, whenever the id or the address of this item is set, on the
  /// thread that does so. Copies do not report. Not owned; outlives the item.
  void reportKeyChanges(std::atomic<bool>* changed);

  unsigned long long getUID() const override;
  void setUID(unsigned long long uid) override;
  unsigned int getId() const override;
  void setId(unsigned int id) override;
  const std::wstring& getPath() const override;
  void setPath(const std::wstring& path) override;
  const std::wstring& getUrl() const override;
  void setUrl(const std::wstring& url) override;
  unsigned long long getSize() const override;
  void setSize(unsigned long long size) override;
  int getPercentDownloaded() const override;
  void setPercentDownloaded(int percent) override;
  const std::wstring& getTitle() const override;
  void setTitle(const std::wstring& title) override;
  DownloadStatusEnumType getStatus() const override;
  void setStatus(DownloadStatusEnumType status) override;
  std::wstring getContentProviderDisplayName() const override;
  void setContentProviderDisplayName(const std::wstring& name) override;
  long getContentEncryptionUsageId() const override;
  void setContentEncryptionUsageId(long id) override;
  const std::string& getTicket() const override;
  void setTicket(const std::string& ticket) override;
  long getTicketId() const override;
  void setTicketId(long id) override;
  bool getTicketAlreadyTorn() const override;
  void setTicketAlreadyTorn(bool torn) override;
  bool getEncrypted() const override;
  void setEncrypted(bool encrypted) override;
  int getSlotNumber() const override;
  void setSlotNumber(int slot) override;
  bool getReadyForProgressivePlayback() const override;
  void setReadyForProgressivePlayback(bool ready) override;
  bool getAutoProgressivePlayback() const override;
  void setAutoProgressivePlayback(bool automatic) override;
  unsigned long getTimeRemaining() const override;
  void setTimeRemaining(unsigned long seconds) override;
  unsigned long getLastProgressUpdateTime() const override;
  void setLastProgressUpdateTime(unsigned long seconds) override;
  KPB::DownloadInfo getDownloadInfo() const override;
  void setDownloadInfo(KPB::DownloadInfo info) override;

 private:
  struct DownloadItemImpl;

  template <class Field, class Value>
  void setKept(Field& field, const Value& value);
  void reportKeyChange() const;

  std::atomic<std::uint64_t> version_;  // two threads may set different fields of the worker's copy

  // Beside the version, because they are asked of every item of the queue as often.
  std::uint32_t id_;
  DownloadStatusEnumType status_ = DownloadStatusQueued;

  std::unique_ptr<DownloadItemImpl> impl_;
};
