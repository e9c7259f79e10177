#pragma once

#include <QObject>
#include <QStringList>
#include <functional>
#include <optional>
#include <utility>

#include "playerx/app/session/QueueRequest.h"
#include "playerx/window/queue/QueueMessages.h"

namespace playerx::window {

/// Adds inputs to the queue, a long list little by little: requests at the door and the end of the
/// window come in between. Lives on the session's thread.
class InputAdder : public QObject {
  Q_OBJECT

 public:
  /// Carries a request out; nullopt when no queue can be reached.
  using Ask = std::function<std::optional<session::Reply>(const session::Request&)>;

  explicit InputAdder(Ask ask) : ask_(std::move(ask)) {}

  /// `reported` follows; inputs that no queue could be told of wait for `addWaiting`.
  void add(const QStringList& inputs);
  void addWaiting();

  /// Adds at once what is left, as far as a queue can be told of it. For the end of the window.
  void addRest();

  /// The queue has this film since an input was added.
  void noteFilm(FilmId film) { films_.append(film); }

  /// Inputs that have not been added, those among them whose refusal has not been reported.
  qsizetype left() const { return toAdd_.size() + waiting_.size() + report_.refused.size(); }

 Q_SIGNALS:
  /// Some inputs have been handed over; `left` wait for their turn.
  void advanced(int left);

  /// All inputs have been handed over. Receivers call `noteFilm` for each film added; `reported`
  /// follows.
  void allAdded();

  /// A request failed; `sentence` says why.
  void failed(const std::string& sentence);

  void reported(const playerx::window::InputReport& report);

 private:
  void addNext();
  void addFirst();
  void addSome(const QStringList& inputs);

  const Ask ask_;
  QStringList toAdd_;    // inputs whose turn has not come yet
  QStringList waiting_;  // inputs that no queue could be told of yet
  InputReport report_;   // of those whose turn has come
  QList<FilmId> films_;  // since adding began
};

}  // namespace playerx::window
