#pragma once

#include <string>

namespace playerx {

/// Id under which the player's front end offers `UserMessages`.
inline constexpr char kUserMessagesId[] = "com.vesk.playerX.pluginInterface.UserMessages";

/// The player's front end as its other plug-ins see it. Operations return at once and may be called
/// from any thread.
class UserMessages {
 public:
  UserMessages() = default;
  UserMessages(const UserMessages&) = delete;
  UserMessages& operator=(const UserMessages&) = delete;
  virtual ~UserMessages() = default;

  /// Shows one sentence (UTF-8).
  virtual void tellUser(const std::string& sentence) = 0;
};

}  // namespace playerx
