#pragma once

#include <QString>
#include <cstdint>
#include <optional>

namespace support {

/// The operating system's places and free space as these tests say they are: this program's own
/// `VeskPlayerX::OSUtilities`. Set while nothing else runs.
struct HostPlaces {
  QString temporary;
  QString mediaFolder;
  std::optional<std::uint64_t> freeForMedia;      ///< nullopt: cannot be learnt
  std::optional<std::uint64_t> freeForTemporary;  ///< nullopt: cannot be learnt
};

HostPlaces& hostPlaces();

}  // namespace support
