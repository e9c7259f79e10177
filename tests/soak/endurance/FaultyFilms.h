#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "tests/support/ScriptedServer.h"

namespace soak {

/// A server of films without end, known by their numbers. One in ten is faulty; the last film of a
/// round is sent only once it is released, so that its transfer lasts until then.
/// Owner: the test. Threads: any.
class FaultyFilms {
 public:
  static constexpr int kRound = 20;

  FaultyFilms();

  std::string url(int film) const { return server_.url("/film-" + std::to_string(film) + ".avi"); }
  static int numberIn(const std::string& url);

  static bool isHeld(int film) { return film % kRound == kRound - 1; }

  /// The reason that the player has to give; empty for a film that is served well.
  static std::string reasonOf(int film);
  static std::string bytesOf(int film);

  /// Has a film sent that is held. No earlier one is asked for any more.
  void release(int film);

 private:
  std::shared_ptr<support::Gate> gateOf(int film);
  support::Script respond(const std::string& request);

  std::mutex mutex_;
  std::map<int, std::shared_ptr<support::Gate>> gates_;  ///< of the films that are held
  support::ScriptedServer server_;
};

}  // namespace soak
