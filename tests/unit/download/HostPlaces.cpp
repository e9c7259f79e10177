#include "tests/unit/download/HostPlaces.h"

#include "KPX/OSUtilities.h"

namespace support {

HostPlaces& hostPlaces() {
  static HostPlaces places;
  return places;
}

}  // namespace support

namespace VeskPlayerX {

QString OSUtilities::getApplicationDataPath() { return support::hostPlaces().temporary; }

QString OSUtilities::getTempPath() { return support::hostPlaces().temporary; }

bool OSUtilities::getFreeSpace(const QString& path, unsigned long long* bytes) {
  const support::HostPlaces& places = support::hostPlaces();
  const auto& space = path == places.mediaFolder ? places.freeForMedia : places.freeForTemporary;
  if (space) *bytes = *space;
  return space.has_value();
}

}  // namespace VeskPlayerX
