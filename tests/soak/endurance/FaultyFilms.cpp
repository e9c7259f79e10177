#include "tests/soak/endurance/FaultyFilms.h"

#include <optional>
#include <vector>

#include "tests/system/BigFile.h"

namespace soak {
namespace {

using support::Script;

/// What a server does in place of sending a film.
struct Fault {
  const char* reason;
  Script (*answer)(const std::string& head, const std::string& body);
};

std::string halfOf(const std::string& body) { return body.substr(0, body.size() / 2); }

const std::vector<Fault>& faults() {
  static const std::vector<Fault> all = {
      {"dropped", [](const std::string& head,
                     const std::string& body) { return Script().send(head + halfOf(body)); }},
      {"dropped",
       [](const std::string& head, const std::string& body) {
         return Script().send(head + halfOf(body)).reset();
       }},
      {"stalled",
       [](const std::string& head, const std::string& body) {
         return Script().send(head + halfOf(body)).stall();
       }},
      {"web_page",
       [](const std::string&, const std::string& body) {
         return Script().send(support::okResponse(body, "Content-Type: text/html\r\n"));
       }},
      {"http_404",
       [](const std::string&, const std::string&) {
         return Script().send(support::bareResponse("404 No"));
       }},
  };
  return all;
}

const Fault* faultOf(int film) {
  return film % 10 == 4 ? &faults()[film / 10 % faults().size()] : nullptr;
}

}  // namespace

FaultyFilms::FaultyFilms() {
  server_.onRequest([this](const std::string& request) { return respond(request); });
}

int FaultyFilms::numberIn(const std::string& url) {
  return std::stoi(url.substr(url.find("/film-") + std::string("/film-").size()));
}

std::string FaultyFilms::reasonOf(int film) {
  const Fault* const fault = faultOf(film);
  return fault == nullptr ? "" : fault->reason;
}

std::string FaultyFilms::bytesOf(int film) {
  return system_test::distinctBytes(20'000 + film % 7 * 30'000, static_cast<unsigned>(film));
}

std::shared_ptr<support::Gate> FaultyFilms::gateOf(int film) {
  const std::lock_guard lock(mutex_);
  auto& gate = gates_[film];
  if (!gate) gate = std::make_shared<support::Gate>();
  return gate;
}

void FaultyFilms::release(int film) {
  gateOf(film)->open();
  const std::lock_guard lock(mutex_);
  gates_.erase(gates_.begin(), gates_.find(film));
}

Script FaultyFilms::respond(const std::string& request) {
  const int film = numberIn(request);
  const std::string body = bytesOf(film);
  const std::string whole = support::okResponse(body);
  const std::string head = whole.substr(0, whole.size() - body.size());
  const Fault* const fault = faultOf(film);
  const bool isRefused = reasonOf(film).starts_with("http_");
  if (request.starts_with("HEAD ") && !isRefused) return Script().send(head);
  if (fault != nullptr) return fault->answer(head, body);
  if (!isHeld(film)) return Script().send(whole);
  const auto wait = [gate = gateOf(film)](support::Connection& line) { line.waitFor(*gate); };
  return Script().then(wait).send(whole);
}

}  // namespace soak
