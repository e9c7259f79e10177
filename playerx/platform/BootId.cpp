#include "playerx/platform/BootId.h"

#include <QByteArray>
#include <QSysInfo>
#include <cstdlib>

namespace playerx {

const std::string& bootId() {
  static const std::string id = [] {
    const char* const given = std::getenv("VESK_BOOT_ID");
    return given != nullptr ? given : QSysInfo::bootUniqueId().toStdString();
  }();
  return id;
}

}  // namespace playerx
