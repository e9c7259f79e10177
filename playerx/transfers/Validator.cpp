#include "playerx/transfers/Validator.h"

#include <curl/curl.h>

#include <algorithm>
#include <ctime>
#include <string_view>

#include "playerx/transfers/ResponseHead.h"

namespace playerx::transfers {
namespace {

constexpr std::time_t kStrongAge = 60;  // seconds: beyond what two clocks may differ by

std::string_view opaque(std::string_view etag) {
  return etag.starts_with("W/") ? etag.substr(2) : etag;
}

bool isVisible(char character) { return character > 0x20 && character < 0x7f; }

bool isEntityTag(std::string_view etag) {
  const std::string_view tag = opaque(etag);
  return tag.size() >= 2 && tag.front() == '"' && tag.back() == '"' &&
         std::all_of(tag.begin(), tag.end(), isVisible);
}

bool isStrongDate(const std::string& lastModified, const std::string& date) {
  const std::time_t modified = curl_getdate(lastModified.c_str(), nullptr);
  const std::time_t sent = curl_getdate(date.c_str(), nullptr);
  return modified >= 0 && sent >= 0 && sent - modified >= kStrongAge;
}

bool isPrintable(char character) { return isVisible(character) || character == ' '; }

}  // namespace

Validator validatorOf(const ResponseHead& head) {
  Validator validator;
  if (isEntityTag(head.etag())) validator.etag = head.etag();
  const std::string& date = head.lastModified();
  if (!std::all_of(date.begin(), date.end(), isPrintable)) return validator;
  validator.lastModified = date;
  validator.dateIsStrong = !date.empty() && isStrongDate(date, head.date());
  return validator;
}

std::string strongText(const Validator& validator) {
  if (!validator.etag.empty() && !validator.etag.starts_with("W/")) return validator.etag;
  return validator.etag.empty() && validator.dateIsStrong ? validator.lastModified : std::string();
}

bool contradict(const Validator& kept, const Validator& answered) {
  if (!kept.etag.empty() && !answered.etag.empty()) {
    return opaque(kept.etag) != opaque(answered.etag);
  }
  if (kept.lastModified.empty() || answered.lastModified.empty()) return false;
  return kept.lastModified != answered.lastModified;
}

}  // namespace playerx::transfers
