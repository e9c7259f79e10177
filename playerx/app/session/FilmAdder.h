#pragma once

#include <functional>
#include <string>

#include "playerx/app/session/PlayerSession.h"
#include "playerx/app/session/QueueRequest.h"
#include "playerx/app/session/QueueWatch.h"

namespace playerx::session {

/// Carries out requests to add films: finds out which are there already, tells the manager of the
/// others. On the session's thread.
class FilmAdder {
 public:
  /// Has an item that was paused by itself go on.
  using LetGoOn = std::function<void(unsigned int id)>;

  /// Session and watch outlive it.
  FilmAdder(PlayerSession& session, QueueWatch& watch, LetGoOn letGoOn)
      : session_(session), watch_(watch), letGoOn_(std::move(letGoOn)) {}

  /// Tickets may have to wait for the online services.
  Reply add(const Request& request);

 private:
  /// One input, without the user name and password that it may have named.
  struct Input {
    std::string text;
    FilmOptions options;
    bool isTicket = false;

    bool hasOptions() const { return options != FilmOptions{}; }
  };
  static Input readInput(const std::string& text, const FilmOptions& options);

  void goOnWithQueue(Reply& reply);
  void addInput(const Input& input, const Request& request, Reply& reply);
  bool goOnWithTicket(const Input& input, const Request& request, Reply& reply, bool& hasTwins);
  bool goOnWith(const Input& input, const Request& request, Reply& reply);
  bool goOnWithComplete(const model::ItemState& film, const Input& input, const Request& request,
                        Reply& reply);
  void goOnWithUnfinished(const model::ItemState& film, const Input& input, const Request& request,
                          Reply& reply);
  void addAnew(const Input& input, const Request& request, Reply& reply, bool hasTwins);
  void handOver(const Input& input, Reply& reply);
  void noteAdded(const Input& input, const Request& request, Reply& reply);
  bool isToAdd(const std::string& address);
  bool isComplete(const std::string& address) const;
  std::vector<std::string> removeTwins(bool isAnew);
  void nameFilm(unsigned int id, const std::string& name);
  void whilePaused(bool isNeeded, const std::function<void()>& change);

  PlayerSession& session_;
  QueueWatch& watch_;
  const LetGoOn letGoOn_;
};

}  // namespace playerx::session
