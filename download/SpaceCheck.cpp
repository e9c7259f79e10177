#include "download/SpaceCheck.h"

#include <limits>

#include "KPX/OSUtilities.h"
#include "kvpm/PathTools.h"

namespace download {

std::uint64_t spaceForFreshDownload(std::uint64_t total) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
  constexpr std::uint64_t kBytesPerExtraByte = 7168;
  const std::uint64_t extra = total / kBytesPerExtraByte;
  if (total > (kMost - extra) / 2) return kMost;
  return 2 * total + extra;
}

std::uint64_t missingBytes(std::uint64_t total, std::uint64_t present) {
  if (present == kvpm::PathTools::kUnknownSize) return total;
  return present < total ? total - present : 0;
}

bool isComplete(std::uint64_t total, std::uint64_t present) {
  return present != kvpm::PathTools::kUnknownSize && present >= total;
}

bool lacksSpace(const QString& folder, std::uint64_t needed) {
  unsigned long long free = 0;
  return VeskPlayerX::OSUtilities::getFreeSpace(folder, &free) && free < needed;
}

}  // namespace download
