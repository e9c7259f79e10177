#pragma once

#include <QString>
#include <atomic>
#include <string>

#include "VeskPlayerX/PlayerInterface.h"
#include "tests/support/fakes/EventLog.h"

namespace support {

/// The player without a screen.
///
/// Log lines: "player.open LOCATION", "player.finished PATH UID", "player.currentMediaId".
/// Owner: the test; outlives its users. Threads: any.
class FakePlayer : public VeskPlayerX::PlayerInterface {
 public:
  explicit FakePlayer(EventLog& log) : log_(log) {}

  /// Key of the session whose film is open; 0 for none.
  void setCurrentMediaId(unsigned long long uid) { current_ = uid; }

  void openMedia(const QString& location) override {
    log_.add("player.open " + location.toStdString());
  }

  void downloadFinished(const QString& path, unsigned long long uid) override {
    log_.add("player.finished " + path.toStdString() + " " + std::to_string(uid));
  }

  unsigned long long currentMediaId() override {
    log_.add("player.currentMediaId");
    return current_;
  }

 private:
  EventLog& log_;
  std::atomic<unsigned long long> current_{0};
};

}  // namespace support
