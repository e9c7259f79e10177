#include "playerx/app/reasons/Certificates.h"

#include <algorithm>
#include <iterator>
#include <regex>

namespace playerx::reasons {

namespace {

/// libcurl passes the words of its TLS library on. The first that fits counts.
constexpr struct {
  const char* words;
  Reason reason;
} kProblems[] = {
    {"certificate has expired", Reason::kExpired},
    {"certificate is not yet valid", Reason::kNotYetValid},
    {"target host name", Reason::kOtherHost},
    {"target ipv4 address", Reason::kOtherHost},
    {"ostname mismatch", Reason::kOtherHost},
    {"IP address mismatch", Reason::kOtherHost},
    {"self-signed certificate in certificate chain", Reason::kUnknownAuthority},
    {"self signed certificate in certificate chain", Reason::kUnknownAuthority},
    {"self-signed certificate", Reason::kSelfSigned},
    {"self signed certificate", Reason::kSelfSigned},
    {"unable to get local issuer certificate", Reason::kUnknownAuthority},
    {"unable to get issuer certificate", Reason::kUnknownAuthority},
    {"unable to verify the first certificate", Reason::kUnknownAuthority},
};

/// libcurl's words when nothing is wrong with the certificate of the server: it has called that of
/// the player expired.
constexpr char kOwnExpired[] = "SSL certificate verification failed";

/// The host that was asked, as the words on a wrong one name it.
std::string hostIn(const std::string& words, const std::string& otherwise) {
  static const std::regex kHost(R"(target (?:host name|ipv4 address) '([^']+)')");
  std::smatch found;
  return std::regex_search(words, found, kHost) ? found[1].str() : otherwise;
}

}  // namespace

Explanation explainCertificate(const std::string& words, const std::string& host) {
  if (words == kOwnExpired) return explain(reasonOf(TransferFailure::kTls), {.host = host});
  const auto problem = std::find_if(
      std::begin(kProblems), std::end(kProblems),
      [&words](const auto& each) { return words.find(each.words) != std::string::npos; });
  const bool isKnown = problem != std::end(kProblems);
  return explain(isKnown ? problem->reason : reasonOf(TransferFailure::kCertificate),
                 {.host = hostIn(words, host)});
}

}  // namespace playerx::reasons
