#pragma once

#include <QString>
#include <optional>

namespace playerx {

/// Preferences of this process alone, such as those given on the command line: they win over what
/// is stored and are never written to the user's settings. May be called from any thread.

/// An empty value counts as not set, as a stored one does.
void setPreferenceOverride(const QString& key, const QString& value);

void clearPreferenceOverrides();

/// The value set for `key`; nullopt if absent.
std::optional<QString> preferenceOverride(const QString& key);

}  // namespace playerx
