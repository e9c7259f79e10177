#pragma once

#include <QByteArray>
#include <optional>
#include <string>
#include <variant>

#include "playerx/app/session/QueueRequest.h"

namespace playerx::door {

/// The version of the protocol that this program speaks; docs/queue-protocol.md describes it.
constexpr int kProtocol = 1;

/// The first line of a process that holds a queue.
struct Greeting {
  int protocol = kProtocol;
  std::string version{};  ///< of the program
  long long pid = 0;
  bool isBusy = false;  ///< no room for another connection: this one is closed

  bool operator==(const Greeting&) const = default;
};

/// A line of a process that holds a queue, behind its greeting.
using Answer = std::variant<session::Reply, session::QueueEvent>;

/// Each message as one line of JSON, without its line feed. Text that is not UTF-8 is replaced.
QByteArray write(const Greeting& greeting);
QByteArray write(const session::Request& request);
QByteArray write(const session::Reply& reply);
QByteArray write(const session::QueueEvent& event);

/// Each line as a message; nullopt for anything else. Members that are not known are ignored.
/// `fault`, if given, becomes what is wrong with a request that is used wrongly, in one sentence;
/// empty for every other line.
std::optional<Greeting> readGreeting(const QByteArray& line);
std::optional<session::Request> readRequest(const QByteArray& line, std::string* fault = nullptr);
std::optional<Answer> readAnswer(const QByteArray& line);

}  // namespace playerx::door
