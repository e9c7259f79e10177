#pragma once

#include <memory>
#include <string>
#include <vector>

#include "VeskPlayerX/VeskDrm.h"
#include "plugin/Scheduler.h"
#include "plugin/ServicesLookup.h"

namespace plugin {

/// How items enter the queue: by an address, by a ticket, and by a protected file that the host
/// finds incomplete.
///
/// Operations of the interface, for all threads; each takes the operation lock by itself, and
/// answers null or nothing when it has to give way. Items that are returned belong to the queue,
/// those that it refused to this object, until the next ticket is added.
class Intake {
 public:
  using Item = SharedQueue::Item;

  /// Nothing is owned, and all outlives this object.
  Intake(SharedQueue& queue, OperationLock& lock, TransferControl& transfers, Moves& moves,
         Scheduler& scheduler, ServicesLookup& services);

  Item* add(const std::wstring& url, const std::wstring& title, const std::wstring& providerName);
  std::vector<Item*> addTicket(const std::wstring& ticketPath);
  void zpsFileOpenedForPlayback(const std::wstring& path,
                                const VeskDrmPlaybackAuthorizationResponse* response,
                                const VeskDrmTransactionRecord* record);

 private:
  using Items = std::vector<std::unique_ptr<Item>>;
  using Records = std::vector<VeskDrmTicketData*>;

  bool addAndResume(std::unique_ptr<Item> item);
  void addClear(const std::wstring& path, std::vector<Item*>& added) KVPM_REQUIRES(kOperationLock);
  void addProtected(const Records& records, const std::wstring& path, std::vector<Item*>& added,
                    Items& refused) KVPM_REQUIRES(kOperationLock);
  std::unique_ptr<Item> append(std::unique_ptr<Item> item) KVPM_REQUIRES(kOperationLock);
  void putFirst(std::unique_ptr<Item> item) KVPM_REQUIRES(kOperationLock);
  void dropEnded(long contentEncryptionUsageId);
  void tellOfAdding();

  SharedQueue& queue_;
  OperationLock& lock_;
  TransferControl& transfers_;
  Moves& moves_;
  Scheduler& scheduler_;
  ServicesLookup& services_;

  /// Of the last ticket: the host was given pointers to them.
  Items refused_ KVPM_GUARDED_BY(kOperationLock);
};

}  // namespace plugin
