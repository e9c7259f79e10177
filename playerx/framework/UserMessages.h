#pragma once

#include <string>

namespace playerx {

/// Id under which the player's front end offers `UserMessages`.
inline constexpr char kUserMessagesId[] = "com.vesk.playerX.pluginInterface.UserMessages";

/// The player's front end as its other plug-ins see it: a way to tell the user something.
class UserMessages {
 public:
  UserMessages() = default;
  UserMessages(const UserMessages&) = delete;
  UserMessages& operator=(const UserMessages&) = delete;
  virtual ~UserMessages() = default;

  /// Shows one sentence (UTF-8). Returns at once. Any thread.
  virtual void tellUser(const std::string& sentence) = 0;
};

}  // namespace playerx
