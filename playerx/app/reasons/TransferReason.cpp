#include "playerx/app/reasons/TransferReason.h"

#include <filesystem>

#include "playerx/app/reasons/Certificates.h"
#include "playerx/app/reasons/Proxy.h"
#include "playerx/transfers/CurlFailure.h"

namespace playerx::reasons {

namespace {

/// Tells a proxy that cannot be reached from a server that cannot.
Explanation explainPeer(const TransferReport& report, const std::string& host, Reason ofServer,
                        Reason ofProxy) {
  const Peer peer = peerOf(report.detail, host);
  return explain(peer.isProxy ? ofProxy : ofServer, {.host = peer.name});
}

}  // namespace

std::optional<Explanation> explainTransfer(const TransferReport& report,
                                           const std::string& address) {
  const std::string host = hostOf(address);
  const Reason reason = reasonOf(report.failure);
  if (report.failure == failureOfStatus(407)) return explainProxyLogin(address);
  switch (report.failure) {
    case TransferFailure::kNone:
      return std::nullopt;
    case TransferFailure::kUnsupportedAddress:
      return explain(reasonOf(faultOf(address)));
    case TransferFailure::kNoSuchProxy:
      return explain(reason, {.words = proxyOf(address)});
    case TransferFailure::kRefused:
      return explainPeer(report, host, reason, Reason::kProxyRefused);
    case TransferFailure::kTimeout:
      return explainPeer(report, host, reason, Reason::kProxyTimeout);
    case TransferFailure::kStalled:
      return explain(report.arrived > 0 ? reason : Reason::kSilent, {.host = host});
    case TransferFailure::kNoSpaceForFilm:
      return explain(reason,
                     {.place = std::filesystem::path(report.requestedPath).parent_path().string()});
    case TransferFailure::kMediaFolder:
      return explain(reason, {.place = report.requestedPath});
    case TransferFailure::kCertificate:
      return explainCertificate(report.detail, host);
    default:
      return explain(reason, {.host = host, .words = report.detail});
  }
}

}  // namespace playerx::reasons
