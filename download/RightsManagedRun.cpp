// The part of a run in which a rights-managed item gets its address, credentials and rights.

#include <utility>

#include "VeskPlayerX/InterfaceIds.h"
#include "VeskPlayerX/ZPSServicesInterface.h"
#include "download/Authorisation.h"
#include "download/HttpDownloadThreadImpl.h"
#include "kvpm/StringTools.h"
#include "persistence/URLEscape.h"

using Impl = HttpDownloadThread::HttpDownloadThreadImpl;
using Services = KPIM::Helper<VeskPlayerX::ZPSServicesInterface>;

namespace {

/// A talk together with the hold on the services that it needs, both gone with the last of the run
/// and the talk's own thread.
struct HeldTalk {
  HeldTalk(std::unique_ptr<Services> held, download::AttachedView& view, const Impl::Item& item)
      : services(std::move(held)), talk(*services->get(), view, item) {}

  std::unique_ptr<Services> services;
  download::Authorisation talk;
};

}  // namespace

bool Impl::authorise(Transfer& transfer) {
  auto services = load<VeskPlayerX::ZPSServicesInterface>(VeskPlayerX::DIN_ZPSServices);
  if (services == nullptr) return fail();
  item_->setStatus(DownloadStatusStarting);
  reportStatus(DownloadStatusStarting);
  const auto held = std::make_shared<HeldTalk>(std::move(services), view_, *item_);
  return hold({held, &held->talk}) && accept(held->talk, transfer);
}

/// True once the talk has ended. A stop ends the wait: the services know no way to be interrupted,
/// so the talk then ends in its own time, and the next one begins after it.
bool Impl::hold(const std::shared_ptr<download::Authorisation>& talk) {
  const auto idle = [this] { return !talks_.isBusy(); };
  if (!state_.waitUnlessStopped(idle) || !state_.isRunning()) return false;
  if (!talks_.start([talk] { talk->run(); })) return fail();
  if (state_.waitUnlessStopped(idle)) return true;
  talk->abandon();
  return false;
}

bool Impl::accept(const download::Authorisation& talk, Transfer& transfer) {
  if (talk.chosenSlot()) item_->setSlotNumber(*talk.chosenSlot());
  if (!talk.granted()) return fail();
  const VeskDrmDownloadAuthorization& answer = *talk.granted();
  const unsigned int id = item_->getId();
  item_->setTicketAlreadyTorn(true);
  tellManager([&](auto& manager) { manager.setTicketAlreadyTorn(id); });
  tellManager([&](auto& manager) { manager.setTicketId(id, answer.ticketId); });
  ticketId_ = answer.ticketId;
  transfer.url = URLEscape::escape(answer.url);
  const std::wstring wideUrl = kvpm::StringTools::stringToWString(transfer.url);
  tellManager([&](auto& manager) { manager.setDownloadUrl(id, wideUrl); });
  transfer.info.setTempUsername(answer.tempUsername);
  transfer.info.setTempPassword(answer.tempPassword);
  totalSize_ = answer.totalSize;
  const auto rights = download::decodeRights(answer.strdChunkBase64);
  transfer.info.setSTRDChunk(rights.data(), rights.size());
  return true;
}
