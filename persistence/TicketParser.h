#pragma once

#include <string>
#include <vector>

#include "VeskPlayerX/DownloadItemInterface.h"
#include "VeskPlayerX/VeskDrm.h"

/// Turns tickets, which name films to download, into new items for the queue.
///
/// Both operations may be called from any thread. The items belong to the caller. Nothing is thrown
/// or reported: unusable input yields fewer items.
class TicketParser {
 public:
  class TicketParserImpl;
  using Items = std::vector<VeskPlayerX::DownloadItemInterface*>;

  /// The films of a clear ticket file, in its order: queued, with title, content provider and URL.
  /// Double quotes around the path are ignored. Empty for a file that is missing, empty, larger
  /// than 32 bits can count, or no clear ticket of version 1.
  static Items parseClearTicket(const std::wstring& path);

  /// One queued, rights-protected item per record that the online services have decoded, in their
  /// order; null records are skipped. The ticket file is consumed: it is moved beside the films
  /// under the first record's title where that is possible, then deleted. Without records it stays.
  static Items processEncryptedTicket(std::vector<VeskDrmTicketData*> records,
                                      std::wstring ticketPath);
};
