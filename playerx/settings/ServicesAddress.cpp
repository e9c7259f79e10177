#include "playerx/settings/ServicesAddress.h"

#include <QString>

#include "KPX/KPXPreferences.h"
#include "playerx/settings/PreferenceKeys.h"

namespace playerx {

std::string servicesAddress() {
  return KPXPreferences::getPreferenceHelper<QString>(kServicesAddressKey, QString(), true)
      .toStdString();
}

}  // namespace playerx
