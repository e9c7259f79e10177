#pragma once

#include <QString>

namespace VeskPlayerX {

/// Places and facts of the operating system, as the player has set them up. All operations are
/// static and may be called from any thread.
class OSUtilities {
 public:
  OSUtilities() = delete;

  /// The folder of the player's own data, without a separator at its end; it exists when the player
  /// could make it.
  static QString getApplicationDataPath();

  /// The folder for files that are still arriving, without a separator at its end.
  static QString getTempPath();

  /// Stores in `*bytes` what the present user may still write below `path` (or its nearest existing
  /// parent) and returns true; returns false, and stores nothing, when that cannot be learnt.
  static bool getFreeSpace(const QString& path, unsigned long long* bytes);
};

}  // namespace VeskPlayerX
