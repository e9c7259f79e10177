#pragma once

#include <string>
#include <vector>

#include "KPIM/Plugin.h"
#include "VeskPlayerX/ZPSServicesInterface.h"
#include "playerx/platform/GuardMutex.h"
#include "playerx/services/ConfirmationSender.h"
#include "playerx/services/JsonClient.h"
#include "playerx/services/ServicesProtocol.h"

namespace playerx {

/// The online video services over HTTP with JSON, as a plug-in. The service's address is a
/// preference; without one every ticket is clear and no download is authorised.
///
/// Any thread may call; an operation that asks the service blocks up to the deadlines of
/// `JsonClient`, or until the player ends (`PlayerEnd`), `confirmDownload` never. What fails is
/// told to the user or in the answer. Its destructor tries the confirmations that are left once
/// more, and blocks for that as long as `ConfirmationSender` does.
class OnlineServices : public KPIM::Plugin, public VeskPlayerX::ZPSServicesInterface {
 public:
  OnlineServices(KPIM::Context* context, JsonClient client);

  KPIM::VESK_RESULT kpimGetInterface(std::string id, void** out) override;

  std::vector<VeskDrmTicketData*> readTicket(const std::wstring& path) override;
  bool isReady(int first, int second, int third) override;
  void authorizeDownload(VeskPlayerX::DownloadItemInterface* item,
                         VeskDrmDownloadAuthorization& answer) override;
  void showError(const std::wstring& details, bool interactive) override;
  void confirmDownload(long ticketId, unsigned long long bytes) override;

 private:
  void tellUser(const std::string& sentence);

  const JsonClient client_;
  GuardMutex mutex_;
  TicketRecords handedOut_ KVPM_GUARDED_BY(mutex_);
  ConfirmationSender confirmations_;
};

}  // namespace playerx
