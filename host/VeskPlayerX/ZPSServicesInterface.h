#pragma once

#include <string>
#include <vector>

#include "VeskPlayerX/VeskDrm.h"

namespace VeskPlayerX {

class DownloadItemInterface;

/// The online video services, offered under `DIN_ZPSServices`.
///
/// All operations may be called from any thread; those that ask the service may block up to the
/// deadlines that the services keep. The order of the virtual operations is part of the interface.
class ZPSServicesInterface {
 public:
  ZPSServicesInterface() = default;
  ZPSServicesInterface(const ZPSServicesInterface&) = delete;
  ZPSServicesInterface& operator=(const ZPSServicesInterface&) = delete;
  virtual ~ZPSServicesInterface() = default;

  /// Decodes the rights-protected ticket file at `path`. The records belong to the services and
  /// live as long as they do; none for a clear ticket or one that cannot be read.
  virtual std::vector<VeskDrmTicketData*> readTicket(const std::wstring& path) = 0;

  /// Whether the services can serve a download now. The download manager passes three zeros.
  virtual bool isReady(int first, int second, int third) = 0;

  /// Asks for authorisation to download `item`, by its ticket and slot number, and fills `answer`
  /// whatever the outcome.
  virtual void authorizeDownload(DownloadItemInterface* item,
                                 VeskDrmDownloadAuthorization& answer) = 0;

  /// Shows the services' own handling of an error to the user; `interactive` allows questions.
  virtual void showError(const std::wstring& details, bool interactive) = 0;

  /// Tells the services that `bytes` bytes of the download for ticket `ticketId` have arrived.
  virtual void confirmDownload(long ticketId, unsigned long long bytes) = 0;
};

}  // namespace VeskPlayerX
