#include "playerx/settings/PreferenceOverrides.h"

#include <map>
#include <string>

#include "playerx/platform/GuardMutex.h"

namespace playerx {
namespace {

GuardMutex overridesMutex;
// Plain text, because the shared data of a QString is handed between threads inside the Qt library
// only.
std::map<std::u16string, std::u16string> overrides KVPM_GUARDED_BY(overridesMutex);

}  // namespace

void setPreferenceOverride(const QString& key, const QString& value) {
  const GuardLock lock(overridesMutex);
  overrides[key.toStdU16String()] = value.toStdU16String();
}

void clearPreferenceOverrides() {
  const GuardLock lock(overridesMutex);
  overrides.clear();
}

std::optional<QString> preferenceOverride(const QString& key) {
  const GuardLock lock(overridesMutex);
  const auto found = overrides.find(key.toStdU16String());
  if (found == overrides.end() || found->second.empty()) return std::nullopt;
  return QString::fromStdU16String(found->second);
}

}  // namespace playerx
