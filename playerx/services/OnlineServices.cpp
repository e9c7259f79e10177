#include "playerx/services/OnlineServices.h"

#include <memory>
#include <optional>
#include <utility>

#include "KPIM/Helper.h"
#include "VeskPlayerX/DownloadItemInterface.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "kvpm/StringTools.h"
#include "playerx/framework/PluginExport.h"
#include "playerx/framework/UserMessages.h"
#include "playerx/services/SealedTicket.h"
#include "playerx/services/ServicesProtocol.h"

namespace playerx {

using kvpm::StringTools;

OnlineServices::OnlineServices(KPIM::Context* context, JsonClient client)
    : KPIM::Plugin(context),
      client_(std::move(client)),
      confirmations_([this](const std::string& request) {
        return client_.post("/downloads/confirm", request).ok;
      }) {}

KPIM::VESK_RESULT OnlineServices::kpimGetInterface(std::string id, void** out) {
  if (id != VeskPlayerX::DIN_ZPSServices) return KPIM::kUnknownInterface;
  return offerInterface<VeskPlayerX::ZPSServicesInterface>(this, out);
}

std::vector<VeskDrmTicketData*> OnlineServices::readTicket(const std::wstring& path) {
  if (!client_.hasAddress()) return {};
  const std::optional<std::string> content = readSealedTicket(path);
  if (!content) return {};
  const JsonReply reply = client_.post("/tickets/read", readTicketRequest(*content));
  if (!reply.ok) {
    tellUser(reply.problem);
    return {};
  }
  std::vector<std::unique_ptr<VeskDrmTicketData>> records = readTicketAnswer(reply.body);
  if (records.empty()) tellUser("The online services cannot read this ticket.");
  std::vector<VeskDrmTicketData*> handedOver;
  handedOver.reserve(records.size());
  for (auto& record : records) handedOver.push_back(record.release());
  return handedOver;
}

bool OnlineServices::isReady(int, int, int) {
  if (!client_.hasAddress()) return false;
  const JsonReply reply = client_.get("/ready");
  return reply.ok && readyAnswer(reply.body);
}

void OnlineServices::authorizeDownload(VeskPlayerX::DownloadItemInterface* item,
                                       VeskDrmDownloadAuthorization& answer) {
  const JsonReply reply = client_.post("/downloads/authorize",
                                       authorizeRequest(item->getTicket(), item->getSlotNumber()));
  if (reply.ok) return authorizeAnswer(reply.body, answer);
  answer = {};
  answer.errorCode = kServicesUnreachable;
  answer.errorDetails = StringTools::stringToWString(reply.problem);
}

void OnlineServices::showError(const std::wstring& details, bool) {
  const std::string words = StringTools::wStringToString(details);
  tellUser(words.empty() ? "The online services refuse this download." : words);
}

void OnlineServices::confirmDownload(long ticketId, unsigned long long bytes) {
  if (client_.hasAddress()) confirmations_.enqueue(confirmRequest(ticketId, bytes));
}

void OnlineServices::tellUser(const std::string& sentence) {
  KPIM::Helper<UserMessages> messages(kUserMessagesId);
  const KPIM::Context::PluginInterfaceFilter filter(kUserMessagesId);
  const KPIM::Context::SimplePluginInfoSelector selector;
  const auto found = messages.loadPlugin(kpimGetPluginContext(), filter, selector, true);
  if (found == KPIM::kSuccess) messages->tellUser(sentence);
}

}  // namespace playerx
