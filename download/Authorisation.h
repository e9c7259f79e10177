#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <string>

#include "VeskPlayerX/DownloadItemInterface.h"
#include "VeskPlayerX/VeskDrm.h"
#include "VeskPlayerX/ZPSServicesInterface.h"
#include "download/Host.h"
#include "download/SideThread.h"

namespace download {

/// What to do about a refused authorisation.
enum class AfterRefusal : std::uint8_t {
  kServicesShow,  ///< the services have their own way to show this error
  kAskForSlot,    ///< the user may choose a slot, then the services are asked once more
  kViewShows,     ///< the view shows the error
};

AfterRefusal afterRefusal(std::int32_t errorCode, bool mayAskForSlot);

/// The online services' leave to download a rights-managed item, with the user's help if need be.
///
/// Every step may take as long as a server or a person takes. So the services and the view are
/// called on side threads, and a stop of the run ends the wait for them. Owner: the worker. Used by
/// its run alone, but for `finish`.
class Authorisation {
 public:
  using Item = VeskPlayerX::DownloadItemInterface;
  using Answer = VeskDrmDownloadAuthorization;

  /// Neither is owned; both outlive this object.
  Authorisation(Host& host, RunState& run) : host_(host), run_(run), servicesThread_(run) {}

  /// Returns the services' answer when they allow the download; nullopt when they do not, or when a
  /// stop ended the wait. The services are given `item` itself, which lives as long as their call.
  /// What they grant is noted in it and reported to the manager, even when the run has ended by
  /// then: a ticket that was torn stays torn.
  std::optional<Answer> request(const std::shared_ptr<Item>& item);

  /// Waits for every call under way. No run is under way any more.
  void finish();

 private:
  /// An item and the services to ask about it, both held until the last call has ended.
  struct Inquiry {
    std::shared_ptr<KPIM::Helper<VeskPlayerX::ZPSServicesInterface>> services;
    std::shared_ptr<Item> item;
  };

  std::optional<Answer> authorise(const Inquiry& inquiry, bool mayAskForSlot);
  Answer askServices(const Inquiry& inquiry);
  void noteGrant(Item& item, const Answer& answer);
  std::optional<Answer> askForSlot(const Inquiry& inquiry, const Answer& refusal);
  SideThread& freshUserThread();

  Host& host_;
  RunState& run_;
  unsigned int grantedId_ = 0;  // the services thread's: item of the latest grant
  SideThread servicesThread_;
  /// One for each question, since one that a stopped run has left open is the user's to close.
  std::list<SideThread> userThreads_;
};

/// The bytes of rights data that travel as base64 text; empty for a text that is not base64.
std::basic_string<unsigned char> decodeRights(const std::string& base64);

}  // namespace download
