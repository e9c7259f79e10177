#include "playerx/app/reasons/TransferReason.h"

#include "playerx/app/reasons/Peer.h"
#include "playerx/app/reasons/WebAddress.h"

namespace playerx {

namespace {

/// The technical words in brackets, where there are any.
std::string inBrackets(const std::string& detail) {
  return detail.empty() ? "" : " (" + detail + ")";
}

std::string sentenceOfNoSpace(const TransferReport& report) {
  const std::string media = report.wishedPath.substr(0, report.wishedPath.rfind('/'));
  // The technical words begin with the file that could not be written.
  const bool isForMedia = report.detail.starts_with(media + "/");
  return (isForMedia ? "There is no room for the film in " + media
                     : std::string("The disk with the folder for unfinished films is full")) +
         "; what has arrived is kept: free some space there and retry, or choose another folder "
         "with " +
         (isForMedia ? "--media." : "--data.");
}

std::string sentenceOfBadAddress(const std::string& address) {
  const std::string fault = faultOfAddress(address);
  if (!fault.empty()) return fault;
  return "The address cannot be used; give one that begins with http:// or https:// and names a "
         "host.";
}

std::string sentenceOfRefusal(const Peer& peer) {
  if (!peer.isProxy) {
    return peer.name + " does not accept connections; try again when the server is up.";
  }
  return "The proxy " + peer.name + " does not accept connections; check the proxy settings.";
}

std::string sentenceOfTimeout(const Peer& peer) {
  return (peer.isProxy ? "The proxy " : "") + peer.name +
         " did not answer in time; try again later.";
}

/// What happened and what can be done, without the host's name where it says nothing.
std::string sentenceOf(TransferFailure failure, const TransferReport& report,
                       const std::string& host) {
  switch (failure) {
    case TransferFailure::kUnsupportedAddress:
      return sentenceOfBadAddress(report.address.empty() ? host : report.address);
    case TransferFailure::kBadName:
      return "No file can be named like this film; ask the provider for another address.";
    case TransferFailure::kNoSuchHost:
      return "There is no host named " + host + "; check the address and the network connection.";
    case TransferFailure::kNoSuchProxy:
      return "The proxy's host name cannot be found; check the proxy settings.";
    case TransferFailure::kRefused:
      return sentenceOfRefusal(peerOf(report.detail, host));
    case TransferFailure::kTimeout:
      return sentenceOfTimeout(peerOf(report.detail, host));
    case TransferFailure::kNetwork:
      return host + " could not be reached" + inBrackets(report.detail) +
             "; check the network connection, and try again later.";
    case TransferFailure::kTls:
      return "No secure connection to " + host +
             " could be made; the server may be too old or ask for a certificate.";
    case TransferFailure::kCertificate:
      return "The certificate of " + host +
             " cannot be trusted; if the server is your own, name its certificate authority with "
             "--cacert.";
    case TransferFailure::kTrustFile:
      return "The file of trusted certificates cannot be read; check --cacert.";
    case TransferFailure::kRedirectLoop:
      return host + " sends the player round in circles; ask the provider for another address.";
    case TransferFailure::kBadRedirect:
      return badRedirect(host).sentence;
    case TransferFailure::kDropped:
      return "The connection to " + host +
             " broke again and again; what has arrived is kept, retry "
             "later.";
    case TransferFailure::kStalled:
      return host + " stopped sending; what has arrived is kept, retry later.";
    case TransferFailure::kBadAnswer:
      return badAnswer(host).sentence;
    case TransferFailure::kKeepsChanging:
      return "The film at " + host + " changed while it was downloaded; retry later.";
    case TransferFailure::kNoSpace:
      return sentenceOfNoSpace(report);
    case TransferFailure::kWriteFailed:
      return "The disk does not take what arrives; check it and retry.";
    case TransferFailure::kTempFolder:
      return "The folder for unfinished films cannot be written; choose another with --data.";
    case TransferFailure::kMediaFolder:
      return "The film cannot be written to " + report.wishedPath +
             "; check the media folder, or choose another with --media, and retry.";
    default:
      return "The film could not be fetched from " + host + inBrackets(report.detail) +
             "; try again later.";
  }
}

}  // namespace

std::optional<FailureReason> reasonFromTransfer(const TransferReport& report,
                                                const std::string& host) {
  if (report.failure == TransferFailure::kNone) return std::nullopt;
  const int status = statusOfFailure(report.failure);
  if (status > 0) return reasonFromStatus(status, host);
  return FailureReason{failureWord(report.failure), sentenceOf(report.failure, report, host)};
}

}  // namespace playerx
