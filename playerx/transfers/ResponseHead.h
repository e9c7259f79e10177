#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace playerx::transfers {

/// The head of the latest response to one request (redirects and challenges for credentials come
/// before the last one), read line by line. Holds copies of the fields that count. Not
/// synchronised. A line that cannot be parsed is skipped.
class ResponseHead {
 public:
  /// Takes one raw header line, line end included. A status line begins a new head; lines after a
  /// head's blank line (the trailer of a body in chunks) are skipped.
  void addLine(std::string_view line);

  /// 0 before the first status line.
  int status() const { return fields_.status; }
  /// False until the blank line behind the fields: a line that broke off may have been the next.
  bool isWhole() const { return fields_.ended; }
  /// Bytes of the body; nullopt when not told or when the body comes in chunks.
  std::optional<std::uint64_t> bodyLength() const;
  /// True when two lengths are told, or one that no file can have.
  bool hasImpossibleLength() const;
  /// True when the body is said to be a page for a browser, such as one to log in.
  bool isWebPage() const;
  /// True when the body has a content coding, such as compression.
  bool isEncoded() const;

  const std::string& contentRange() const { return fields_.contentRange; }
  const std::string& etag() const { return fields_.etag; }
  const std::string& lastModified() const { return fields_.lastModified; }
  const std::string& date() const { return fields_.date; }
  const std::string& retryAfter() const { return fields_.retryAfter; }

  /// Bytes of all lines taken.
  std::size_t size() const { return size_; }

 private:
  struct Fields {
    int status = 0;
    bool ended = false;
    bool lengthsDiffer = false;
    std::string contentLength, contentRange, contentEncoding, contentType, transferEncoding;
    std::string etag, lastModified, date, retryAfter;
  };

  void addField(std::string_view name, std::string_view value);

  Fields fields_;
  std::size_t size_ = 0;
};

}  // namespace playerx::transfers
