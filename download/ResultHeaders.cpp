#include "download/ResultHeaders.h"

#include <QByteArray>
#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace download {
namespace {

/// The number at the beginning of `text` by the rules of `atoll`, limited to 64 bits.
unsigned long long leadingNumber(const std::string& text) {
  return static_cast<unsigned long long>(std::strtoll(text.c_str(), nullptr, 10));
}

/// What follows the first `position` characters, the line end included.
std::string valueAt(const std::string& line, std::size_t position) {
  return line.substr(std::min(position, line.size()));
}

}  // namespace

void noteHeader(const std::string& line, HttpResult& result) {
  constexpr std::string_view kLength = "content-length";
  constexpr std::string_view kLocation = "Location:";
  if (qstrnicmp(line.c_str(), kLength.data(), kLength.size()) == 0) {
    result.setContentLength(leadingNumber(valueAt(line, kLength.size() + 1)));
  } else if (line.starts_with(kLocation)) {
    result.setRedirection(valueAt(line, kLocation.size() + 1));
  }
}

void judgeInfo(const std::string& length, const std::string& location, HttpResult& result) {
  if (!length.empty()) result.setContentLength(leadingNumber(length));
  if (!location.empty()) result.setRedirection(location);
  if (result.getContentLength() != 0) {
    result.setResult(HTTP_RESULT_OK);
  } else if (!result.getRedirection().empty()) {
    result.setResult(HTTP_RESULT_REDIRECT);
  } else {
    result.setErrorDescription("Empty response from server.");
  }
}

}  // namespace download
