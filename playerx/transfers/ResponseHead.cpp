#include "playerx/transfers/ResponseHead.h"

#include <strings.h>

#include "playerx/platform/Text.h"
#include "playerx/transfers/ContentRange.h"

namespace playerx::transfers {
namespace {

bool sameName(std::string_view left, std::string_view right) {
  return left.size() == right.size() && strncasecmp(left.data(), right.data(), left.size()) == 0;
}

int statusOf(std::string_view line) {
  const std::size_t blank = line.find(' ');
  if (blank == std::string_view::npos) return 0;
  const auto number = parseNumber(trimmed(line.substr(blank + 1)).substr(0, 3));
  return number ? static_cast<int>(*number) : 0;
}

}  // namespace

void ResponseHead::addLine(std::string_view line) {
  size_ += line.size();
  if (line.starts_with("HTTP/")) {
    fields_ = Fields{};
    fields_.status = statusOf(line);
    return;
  }
  if (fields_.ended) return;
  if (trimmed(line).empty()) {
    fields_.ended = true;
    return;
  }
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos) return;
  addField(line.substr(0, colon), trimmed(line.substr(colon + 1)));
}

void ResponseHead::addField(std::string_view name, std::string_view value) {
  const struct {
    const char* name;
    std::string& value;
  } wanted[] = {{"Content-Length", fields_.contentLength},
                {"Content-Range", fields_.contentRange},
                {"Content-Encoding", fields_.contentEncoding},
                {"Content-Type", fields_.contentType},
                {"Transfer-Encoding", fields_.transferEncoding},
                {"ETag", fields_.etag},
                {"Last-Modified", fields_.lastModified},
                {"Date", fields_.date},
                {"Retry-After", fields_.retryAfter}};
  const std::string length = fields_.contentLength;
  for (const auto& field : wanted) {
    if (sameName(name, field.name)) field.value = value;
  }
  if (!length.empty() && fields_.contentLength != length) fields_.lengthsDiffer = true;
}

std::optional<std::uint64_t> ResponseHead::bodyLength() const {
  if (!fields_.transferEncoding.empty()) return std::nullopt;
  return parseNumber(fields_.contentLength);
}

bool ResponseHead::hasImpossibleLength() const {
  const std::string& length = fields_.contentLength;
  const bool isNumber = length.find_first_not_of("0123456789") == std::string::npos;
  return fields_.lengthsDiffer || (!length.empty() && isNumber && !parseNumber(length));
}

bool ResponseHead::isWebPage() const {
  const std::string_view type = fields_.contentType;
  return sameName(trimmed(type.substr(0, type.find(';'))), "text/html");
}

bool ResponseHead::isEncoded() const {
  return !fields_.contentEncoding.empty() && !sameName(fields_.contentEncoding, "identity");
}

}  // namespace playerx::transfers
