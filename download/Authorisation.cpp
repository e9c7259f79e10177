#include "download/Authorisation.h"

#include <utility>

#include "download/AttachedView.h"
#include "persistence/RFCBase64Codec.h"

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

Authorisation::Authorisation(VeskPlayerX::ZPSServicesInterface& services, AttachedView& view,
                             const VeskPlayerX::DownloadItemInterface& item)
    : services_(services), view_(view), item_(&item) {}

void Authorisation::run() {
  if (!abandoned_ && services_.isReady(0, 0, 0)) request(true);
}

void Authorisation::request(bool mayAskForSlot) {
  if (abandoned_) return;
  VeskDrmDownloadAuthorization answer;
  services_.authorizeDownload(&item_, answer);
  if (answer.success) {
    granted_ = std::move(answer);
  } else {
    refuse(answer, mayAskForSlot);
  }
}

void Authorisation::refuse(const VeskDrmDownloadAuthorization& answer, bool mayAskForSlot) {
  if (abandoned_) return;
  switch (afterRefusal(answer.errorCode, mayAskForSlot)) {
    case AfterRefusal::kServicesShow:
      services_.showError(answer.errorDetails, true);
      break;
    case AfterRefusal::kAskForSlot:
      askForSlot(answer);
      break;
    case AfterRefusal::kViewShows:
      view_.notify([&](auto& view) { view.showAuthorizationError(answer); });
      break;
  }
}

void Authorisation::askForSlot(const VeskDrmDownloadAuthorization& answer) {
  const int slot =
      view_.ask([&](auto& view) { return view.chooseSlot(item_.getTitle(), answer); }, kDeclined);
  if (slot < 0) return;
  chosenSlot_ = slot;
  item_.setSlotNumber(slot);
  request(false);
}

std::basic_string<unsigned char> decodeRights(const std::string& base64) {
  int length = 0;
  const std::unique_ptr<char[]> bytes(kv64::RFCBase64Codec().decode(base64, &length));
  if (bytes == nullptr) return {};
  return {bytes.get(), bytes.get() + length};
}

}  // namespace download
