#include "download/Authorisation.h"

#include "VeskPlayerX/InterfaceIds.h"
#include "kvpm/StringTools.h"
#include "persistence/RFCBase64Codec.h"
#include "persistence/URLEscape.h"

namespace download {
namespace {

constexpr std::int32_t kServicesOwnError = 5000;
constexpr std::int32_t kSlotNeeded = 32054;
constexpr int kDeclined = -1;

}  // namespace

AfterRefusal afterRefusal(std::int32_t errorCode, bool mayAskForSlot) {
  if (errorCode == kServicesOwnError) return AfterRefusal::kServicesShow;
  if (errorCode == kSlotNeeded && mayAskForSlot) return AfterRefusal::kAskForSlot;
  return AfterRefusal::kViewShows;
}

std::optional<Authorisation::Answer> Authorisation::request(const std::shared_ptr<Item>& item) {
  const Inquiry inquiry{host_.load<VeskPlayerX::ZPSServicesInterface>(VeskPlayerX::DIN_ZPSServices),
                        item};
  if (inquiry.services == nullptr) return std::nullopt;
  item->setStatus(DownloadStatusStarting);
  host_.report([&](auto& manager) { manager.updateStatus(item->getId(), DownloadStatusStarting); });
  const auto ready =
      servicesThread_.ask([inquiry] { return inquiry.services->get()->isReady(0, 0, 0); });
  return ready.value_or(false) ? authorise(inquiry, true) : std::nullopt;
}

std::optional<Authorisation::Answer> Authorisation::authorise(const Inquiry& inquiry,
                                                              bool mayAskForSlot) {
  const auto answer = servicesThread_.ask([this, inquiry] { return askServices(inquiry); });
  if (!answer || answer->success) return answer;
  switch (afterRefusal(answer->errorCode, mayAskForSlot)) {
    case AfterRefusal::kServicesShow:
      freshUserThread().run([inquiry, details = answer->errorDetails] {
        inquiry.services->get()->showError(details, true);
      });
      return std::nullopt;
    case AfterRefusal::kAskForSlot:
      return askForSlot(inquiry, *answer);
    case AfterRefusal::kViewShows:
      freshUserThread().run([this, refusal = *answer] {
        host_.view().notify([&](auto& view) { view.showAuthorizationError(refusal); });
      });
      return std::nullopt;
  }
  return std::nullopt;
}

/// On the services thread.
Authorisation::Answer Authorisation::askServices(const Inquiry& inquiry) {
  Item& item = *inquiry.item;
  // Granted to an earlier run, after that had been stopped and this item had been copied.
  if (item.getId() == grantedId_) item.setTicketAlreadyTorn(true);
  Answer answer;
  inquiry.services->get()->authorizeDownload(&item, answer);
  if (answer.success) noteGrant(item, answer);
  return answer;
}

/// On the services thread, since the run that asked may have been stopped meanwhile.
void Authorisation::noteGrant(Item& item, const Answer& answer) {
  const unsigned int id = item.getId();
  grantedId_ = id;
  item.setTicketAlreadyTorn(true);
  const std::wstring url = kvpm::StringTools::stringToWString(URLEscape::escape(answer.url));
  host_.report([&](auto& manager) { manager.setTicketAlreadyTorn(id); });
  host_.report([&](auto& manager) { manager.setTicketId(id, answer.ticketId); });
  host_.report([&](auto& manager) { manager.setDownloadUrl(id, url); });
}

std::optional<Authorisation::Answer> Authorisation::askForSlot(const Inquiry& inquiry,
                                                               const Answer& refusal) {
  const auto slot = freshUserThread().ask([this, item = inquiry.item, refusal] {
    return host_.view().ask([&](auto& view) { return view.chooseSlot(item->getTitle(), refusal); },
                            kDeclined);
  });
  if (slot.value_or(kDeclined) < 0) return std::nullopt;
  inquiry.item->setSlotNumber(*slot);
  return authorise(inquiry, false);
}

SideThread& Authorisation::freshUserThread() {
  userThreads_.remove_if([](const SideThread& thread) { return !thread.isBusy(); });
  return userThreads_.emplace_back(run_);
}

void Authorisation::finish() {
  servicesThread_.finish();
  userThreads_.clear();
}

std::basic_string<unsigned char> decodeRights(const std::string& base64) {
  int length = 0;
  const std::unique_ptr<char[]> bytes(kv64::RFCBase64Codec().decode(base64, &length));
  if (bytes == nullptr) return {};
  return {bytes.get(), bytes.get() + length};
}

}  // namespace download
