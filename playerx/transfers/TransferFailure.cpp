#include "playerx/transfers/TransferFailure.h"

namespace playerx {

namespace {

/// The word of a failure that is no status; null for a number that is none.
const char* wordOf(TransferFailure failure) {
  switch (failure) {
    case TransferFailure::kNone:
      return "none";
    case TransferFailure::kUnsupportedAddress:
      return "unsupported_url";
    case TransferFailure::kBadName:
      return "bad_name";
    case TransferFailure::kNoSuchHost:
      return "no_such_host";
    case TransferFailure::kNoSuchProxy:
      return "no_such_proxy";
    case TransferFailure::kRefused:
      return "refused";
    case TransferFailure::kTimeout:
      return "timeout";
    case TransferFailure::kNetwork:
      return "network";
    case TransferFailure::kTls:
      return "tls";
    case TransferFailure::kCertificate:
      return "certificate";
    case TransferFailure::kTrustFile:
      return "trust_file";
    case TransferFailure::kRedirectLoop:
      return "redirect_loop";
    case TransferFailure::kBadRedirect:
      return "bad_redirect";
    case TransferFailure::kDropped:
      return "dropped";
    case TransferFailure::kStalled:
      return "stalled";
    case TransferFailure::kBadAnswer:
      return "bad_answer";
    case TransferFailure::kKeepsChanging:
      return "keeps_changing";
    case TransferFailure::kNoSpace:
      return "no_space";
    case TransferFailure::kWriteFailed:
      return "write_failed";
    case TransferFailure::kTempFolder:
      return "temp_folder";
    case TransferFailure::kMediaFolder:
      return "media_folder";
    case TransferFailure::kInternal:
      return "internal";
  }
  return nullptr;
}

}  // namespace

std::string failureWord(TransferFailure failure) {
  if (const int status = statusOfFailure(failure); status > 0) {
    return "http_" + std::to_string(status);
  }
  const char* const word = wordOf(failure);
  return word == nullptr ? "internal" : word;
}

}  // namespace playerx
