#include "playerx/services/SealedTicket.h"

#include "kvpm/File.h"

namespace playerx {

namespace {

bool isSealed(std::string_view content) {
  return content.substr(0, content.find_first_of("\n\r")) == kSealedTicketLine;
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
