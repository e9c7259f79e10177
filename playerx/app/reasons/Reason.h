#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "playerx/transfers/Address.h"
#include "playerx/transfers/TransferFailure.h"

namespace playerx::reasons {

/// Why a film cannot be downloaded.
///
/// The failures of a transfer are reasons under the numbers that `TransferFailure` gives them, HTTP
/// statuses included; the enumerators are what the player itself finds out. What each is called and
/// what people read is in the one table of Reason.cpp.
enum class Reason : std::int32_t {
  // An argument that is not the address of a film.
  kNoAddress = 40,
  kBadPort = 41,
  kUnescapedAddress = 42,
  kCredentialsInAddress = 43,
  kUnsupportedType = 44,
  kNumericHost6 = 45,    ///< an IP address of version 6
  kMisplacedHttps = 46,  ///< "https" behind http://, which the download manager takes as the scheme
  kUserNotText = 47,     ///< a user name or password that is not UTF-8

  // A ticket.
  kNoTicketFile = 50,
  kTicketIsFolder = 51,
  kUnreadableTicket = 52,
  kLargeTicket = 53,
  kTooManyFilms = 54,
  kLongText = 55,
  kEmptyTicket = 56,
  kSealedTicket = 57,  ///< protected, and no online services are named
  kFilmOfTicket = 58,  ///< an address in it cannot be used; the words say why

  // The online services.
  kServicesSaid = 60,  ///< the words are their own
  kServicesNotNamed = 61,
  kServicesUnreachable = 62,
  kServicesNotReady = 63,
  kNotAuthorized = 64,
  kNoAuthorization = 65,  ///< nothing was refused, yet there is no usable answer
  kSlotDeclined = 66,
  kAccessExpired = 67,

  // The film, its server and the places that it needs.
  kItemWithoutAddress = 70,
  kEmptyFile = 71,
  kNoLength = 72,
  kTooLittleSpace = 73,  ///< found before a byte was fetched
  kFolderUnusable = 74,
  kProxyRefused = 75,
  kProxyTimeout = 76,
  kUnexplained = 77,  ///< failed, though the server answers now
  kProxyLogin = 78,
  kSilent = 79,  ///< the server took the connection and never sent a byte
  kLoginForSize =
      80,  ///< the size is asked for without user name and password, and that is refused

  // What is wrong with a server's certificate.
  kExpired = 85,
  kNotYetValid = 86,
  kOtherHost = 87,
  kSelfSigned = 88,
  kUnknownAuthority = 89,
};

/// The reason why a transfer broke.
constexpr Reason reasonOf(TransferFailure failure) { return static_cast<Reason>(failure); }

/// The reason for an HTTP status of 300 and above, after redirects that could be followed.
constexpr Reason reasonOfStatus(long status) {
  return reasonOf(failureOfStatus(static_cast<int>(status)));
}

/// What is wrong with an address.
Reason reasonOf(AddressFault fault);

/// The stable word of a reason, listed in docs/json-output.md: "no_such_host", "http_404". Reasons
/// that a program need not tell apart share one; "internal" for a number that is not a reason.
std::string codeOf(Reason reason);

/// What happened, as the table has it, with the names of its facts in braces: "{host} has no film
/// at this address ({status})". A face that speaks another language looks its translation up by it.
std::string sentenceForm(Reason reason);

/// The forms of all reasons.
std::vector<std::string> sentenceForms();

/// What can be done about reasons, as the table has it; some of it more than once.
std::vector<std::string> adviceForms();

/// What the sentence of a reason may mention.
struct Facts {
  std::string host{};   ///< the server, or the proxy where the reason speaks of one
  std::string place{};  ///< a file or a folder
  std::string words{};  ///< technical words, or those of the online services
  int number = 0;       ///< a line or a count
};

/// A reason in plain English, UTF-8.
struct Explanation {
  Reason reason{};
  std::string happened{};  ///< what happened: a sentence without its full stop
  std::string advice{};    ///< what can be done, as the command line puts it; may be empty

  std::string code() const { return codeOf(reason); }

  /// Both as one sentence.
  std::string sentence() const;

  bool operator==(const Explanation&) const = default;
};

Explanation explain(Reason reason, const Facts& facts = {});

}  // namespace playerx::reasons
