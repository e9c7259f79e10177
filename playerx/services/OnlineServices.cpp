#include "playerx/services/OnlineServices.h"

#include <memory>
#include <optional>
#include <utility>

#include "KPIM/Helper.h"
#include "VeskPlayerX/DownloadItemInterface.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "kvpm/StringTools.h"
#include "playerx/framework/PlayerEnd.h"
#include "playerx/framework/PluginExport.h"
#include "playerx/framework/UserMessages.h"
#include "playerx/services/SealedTicket.h"

namespace playerx {

using kvpm::StringTools;

namespace {

/// Gives up once the player says this of its end; never in a player that says nothing of it.
IsGivenUp onceTrue(KPIM::Context* context, bool (PlayerEnd::*isSo)() const) {
  const std::shared_ptr<KPIM::Helper<PlayerEnd>> end = KPIM::load<PlayerEnd>(context, kPlayerEndId);
  return [end, isSo] { return end != nullptr && (end->get()->*isSo)(); };
}

}  // namespace

OnlineServices::OnlineServices(KPIM::Context* context, JsonClient client)
    : KPIM::Plugin(context),
      client_(std::move(client)),
      confirmations_([this](const std::string& request, const IsGivenUp& isGivenUp) {
        return client_.post("/downloads/confirm", request, isGivenUp).ok;
      }) {}

KPIM::VESK_RESULT OnlineServices::kpimGetInterface(std::string id, void** out) {
  if (id != VeskPlayerX::DIN_ZPSServices) return KPIM::kUnknownInterface;
  return offerInterface<VeskPlayerX::ZPSServicesInterface>(this, out);
}

std::vector<VeskDrmTicketData*> OnlineServices::readTicket(const std::wstring& path) {
  if (!client_.hasAddress()) return {};
  const std::optional<std::string> content = readSealedTicket(path);
  if (!content) return {};
  const JsonReply reply = client_.post("/tickets/read", readTicketRequest(*content),
                                       onceTrue(kpimGetPluginContext(), &PlayerEnd::isWanted));
  if (!reply.ok) {
    tellUser(reply.problem);
    return {};
  }
  std::optional<TicketRecords> records = readTicketAnswer(reply.body);
  if (!records) {
    tellUser(kNoProperAnswer);
    return {};
  }
  if (records->empty()) tellUser("The online services cannot read this ticket.");
  const GuardLock lock(mutex_);
  std::vector<VeskDrmTicketData*> films;
  for (auto& record : *records) {
    films.push_back(record.get());
    handedOut_.push_back(std::move(record));
  }
  return films;
}

bool OnlineServices::isReady(int, int, int) {
  if (!client_.hasAddress()) return false;
  const JsonReply reply =
      client_.get("/ready", onceTrue(kpimGetPluginContext(), &PlayerEnd::isUnderWay));
  return reply.ok && readyAnswer(reply.body);
}

void OnlineServices::authorizeDownload(VeskPlayerX::DownloadItemInterface* item,
                                       VeskDrmDownloadAuthorization& answer) {
  const JsonReply reply = client_.post("/downloads/authorize",
                                       authorizeRequest(item->getTicket(), item->getSlotNumber()),
                                       onceTrue(kpimGetPluginContext(), &PlayerEnd::isUnderWay));
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
