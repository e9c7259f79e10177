#include "playerx/services/SealedTicket.h"

#include "kvpm/File.h"

namespace playerx {

namespace {

constexpr char kFirstLine[] = "VeskSealedTicket 1";

bool isSealed(const std::string& content) {
  const std::size_t length = sizeof kFirstLine - 1;
  return content.compare(0, length, kFirstLine) == 0 &&
         (content.size() == length || content[length] == '\n' || content[length] == '\r');
}

}  // namespace

std::optional<std::string> readSealedTicket(const std::wstring& path) {
  kvpm::File file;
  if (file.open(path, kvpm::FileOpenRead) != 0) return std::nullopt;
  const std::int64_t size = file.getTotalSize();
  if (size <= 0 || static_cast<std::size_t>(size) > kMaxSealedTicket) return std::nullopt;
  std::string content(static_cast<std::size_t>(size), '\0');
  if (file.read(content.data(), content.size()) != size || !isSealed(content)) return std::nullopt;
  return content;
}

}  // namespace playerx
