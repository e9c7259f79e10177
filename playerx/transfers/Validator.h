#pragma once

#include <string>

namespace playerx::transfers {

class ResponseHead;

/// What a server says of the version of a file that it sends. A record.
struct Validator {
  std::string etag;           ///< as sent, quotes and "W/" included; empty when not sent
  std::string lastModified;   ///< as sent; empty when not sent
  bool dateIsStrong = false;  ///< two versions cannot share `lastModified`

  bool operator==(const Validator&) const = default;
};

/// The validator of a response. An entity tag that is not one, or holds more than visible ASCII,
/// counts as not sent. A date is strong when the file was a minute old, or older, when it was sent.
Validator validatorOf(const ResponseHead& head);

/// The text for an If-Range field: a strong entity tag, or else a strong date; empty when there is
/// neither.
std::string strongText(const Validator& validator);

/// True when the two surely belong to different versions.
bool contradict(const Validator& kept, const Validator& answered);

}  // namespace playerx::transfers
