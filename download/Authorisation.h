#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "VeskPlayerX/VeskDrm.h"
#include "VeskPlayerX/ZPSServicesInterface.h"
#include "item/DownloadItem.h"

namespace download {

class AttachedView;

/// What to do about a refused authorisation.
enum class AfterRefusal : std::uint8_t {
  kServicesShow,  ///< the services have their own way to show this error
  kAskForSlot,    ///< the user may choose a slot, then the services are asked once more
  kViewShows,     ///< the view shows the error
};

AfterRefusal afterRefusal(std::int32_t errorCode, bool mayAskForSlot);

/// The talk with the online services, and with the user, about one rights-managed item.
///
/// Every step may take as long as a server or a person takes, so the talk runs on a thread of its
/// own, on a copy of the item, and may outlast the run that began it. `run` is called once; what it
/// found out is read after it has returned.
class Authorisation {
 public:
  /// `services` and `view` outlive the talk.
  Authorisation(VeskPlayerX::ZPSServicesInterface& services, AttachedView& view,
                const VeskPlayerX::DownloadItemInterface& item);

  void run();

  /// Nobody waits for the talk any more: the step under way is the last one. On any thread.
  void abandon() { abandoned_ = true; }

  /// The services' answer when they allow the download.
  const std::optional<VeskDrmDownloadAuthorization>& granted() const { return granted_; }

  /// The slot that the user has chosen.
  const std::optional<int>& chosenSlot() const { return chosenSlot_; }

 private:
  void request(bool mayAskForSlot);
  void refuse(const VeskDrmDownloadAuthorization& answer, bool mayAskForSlot);
  void askForSlot(const VeskDrmDownloadAuthorization& answer);

  VeskPlayerX::ZPSServicesInterface& services_;
  AttachedView& view_;
  DownloadItem item_;
  std::atomic<bool> abandoned_{false};
  std::optional<VeskDrmDownloadAuthorization> granted_;
  std::optional<int> chosenSlot_;
};

/// The bytes of rights data that travel as base64 text; none for a text that is not base64.
std::basic_string<unsigned char> decodeRights(const std::string& base64);

}  // namespace download
