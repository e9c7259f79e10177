#include "demo/ServicesServer.h"

#include <httplib.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <thread>
#include <utility>

namespace demo {

namespace {

using Json = nlohmann::json;

constexpr std::chrono::minutes kGrantLifetime(5);
constexpr std::chrono::minutes kSilence(1);
constexpr char kFirstLine[] = "VeskSealedTicket 1";

void answerJson(httplib::Response& response, const Json& json) {
  response.set_content(json.dump(), "application/json");
}

Json bodyOf(const httplib::Request& request) {
  Json json = Json::parse(request.body, nullptr, false);
  return json.is_object() ? json : Json::object();
}

std::string textOf(const Json& json, const char* key) {
  const auto found = json.find(key);
  return found != json.end() && found->is_string() ? found->get<std::string>() : "";
}

std::int64_t numberOf(const Json& json, const char* key, std::int64_t otherwise) {
  const auto found = json.find(key);
  return found != json.end() && found->is_number_integer() ? found->get<std::int64_t>() : otherwise;
}

/// The sealed lines of a ticket file.
std::vector<std::string> sealedLines(const std::string& content) {
  std::istringstream lines(content);
  std::vector<std::string> sealed;
  std::string line;
  bool isFirst = true;
  while (std::getline(lines, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (isFirst && line != kFirstLine) return {};
    if (!isFirst && !line.empty()) sealed.push_back(line);
    isFirst = false;
  }
  return sealed;
}

Json refusal(int error, const char* details) {
  return {{"success", false}, {"error", error}, {"details", details}};
}

/// The answer of a mode that needs no film; nullopt for the other modes.
std::optional<std::string> answerOfMode(const std::string& mode) {
  if (mode == "error-5000") return refusal(5000, "The film was withdrawn by its provider.").dump();
  if (mode == "error-32054") return refusal(32054, "All slots are taken.").dump();
  if (mode == "error-7") return refusal(7, "This account may not download.").dump();
  if (mode == "malformed") return "{\"success\": tru";
  return std::nullopt;
}

}  // namespace

ServicesServer::ServicesServer(const TicketSealer::Key& key, std::string mediaAddress,
                               std::vector<ProtectedFilm> films)
    : sealer_(key), mediaAddress_(std::move(mediaAddress)), films_(std::move(films)) {}

void ServicesServer::serve(httplib::Server& server) {
  const auto bind = [this](Handler handler) {
    return [this, handler](const httplib::Request& request, httplib::Response& response) {
      (this->*handler)(request, response);
    };
  };
  server.Post("/tickets/read", bind(&ServicesServer::readTicket));
  server.Get("/ready", bind(&ServicesServer::ready));
  server.Post("/downloads/authorize", bind(&ServicesServer::authorize));
  server.Post("/downloads/confirm", bind(&ServicesServer::confirm));
  server.Post("/control", bind(&ServicesServer::setMode));
  server.Get("/control", bind(&ServicesServer::report));
}

std::string ServicesServer::sealedTicket(const std::vector<std::string>& names) const {
  std::string content = std::string(kFirstLine) + "\n";
  for (const std::string& name : names) content += sealer_.seal(name) + "\n";
  return content;
}

void ServicesServer::readTicket(const httplib::Request& request, httplib::Response& response) {
  Json records = Json::array();
  for (const std::string& line : sealedLines(textOf(bodyOf(request), "ticket"))) {
    const std::optional<std::string> name = sealer_.open(line);
    const ProtectedFilm* film = name ? filmNamed(*name) : nullptr;
    if (film == nullptr) continue;
    records.push_back({{"ticket", line},
                       {"title", film->title},
                       {"usageId", film->usageId},
                       {"provider", film->provider},
                       {"version", "2.1"}});
  }
  answerJson(response, {{"records", records}});
}

void ServicesServer::ready(const httplib::Request&, httplib::Response& response) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const bool notReady = mode_ == "not-ready" && modeTimes_ > 0;
  if (notReady) --modeTimes_;
  answerJson(response, {{"ready", !notReady}});
}

void ServicesServer::authorize(const httplib::Request& request, httplib::Response& response) {
  const Json body = bodyOf(request);
  const std::string mode = modeNow(static_cast<int>(numberOf(body, "slot", -1)));
  if (mode == "silent") std::this_thread::sleep_for(kSilence);
  if (const std::optional<std::string> answer = answerOfMode(mode)) {
    return response.set_content(*answer, "application/json");
  }
  const std::optional<std::string> name = sealer_.open(textOf(body, "ticket"));
  const ProtectedFilm* film = name ? filmNamed(*name) : nullptr;
  if (film == nullptr) return answerJson(response, refusal(404, "This ticket is not known."));
  response.set_content(grantFor(*film, mode), "application/json");
}

void ServicesServer::confirm(const httplib::Request& request, httplib::Response& response) {
  const Json body = bodyOf(request);
  const std::lock_guard<std::mutex> lock(mutex_);
  confirmed_.emplace_back(numberOf(body, "ticketId", 0),
                          static_cast<std::uint64_t>(numberOf(body, "bytes", 0)));
  answerJson(response, Json::object());
}

void ServicesServer::setMode(const httplib::Request& request, httplib::Response& response) {
  const Json body = bodyOf(request);
  if (textOf(body, "mode") == "revoke") grants_.revokeAll();
  const std::lock_guard<std::mutex> lock(mutex_);
  mode_ = textOf(body, "mode");
  modeTimes_ = static_cast<int>(numberOf(body, "times", 1));
  answerJson(response, Json::object());
}

void ServicesServer::report(const httplib::Request&, httplib::Response& response) {
  const std::lock_guard<std::mutex> lock(mutex_);
  Json confirmations = Json::array();
  for (const auto& [ticketId, bytes] : confirmed_) {
    confirmations.push_back({{"ticketId", ticketId}, {"bytes", bytes}});
  }
  answerJson(response, {{"authorizations", authorizations_}, {"confirmations", confirmations}});
}

const ProtectedFilm* ServicesServer::filmNamed(const std::string& name) const {
  const auto found = std::find_if(films_.begin(), films_.end(),
                                  [&name](const ProtectedFilm& film) { return film.name == name; });
  return found == films_.end() ? nullptr : &*found;
}

std::string ServicesServer::modeNow(int slot) {
  const std::lock_guard<std::mutex> lock(mutex_);
  ++authorizations_;
  if (modeTimes_ <= 0 || (mode_ == "error-32054" && slot >= 0)) return "";
  --modeTimes_;
  return mode_;
}

std::string ServicesServer::grantFor(const ProtectedFilm& film, const std::string& mode) {
  const auto lifetime = mode == "expired" ? std::chrono::minutes(0) : kGrantLifetime;
  const AccessGrants::Grant grant = grants_.issue(film.name, lifetime);
  const std::string rights =
      mode == "bad-base64" ? "***not base64***" : encodeBase64("rights of " + film.name);
  return Json{{"success", true},
              {"url", mediaAddress_ + "/protected/" + film.name},
              {"username", grant.username},
              {"password", grant.password},
              {"ticketId", film.ticketId},
              {"size", mode == "lying-size" ? film.size + 1000 : film.size},
              {"rights", rights}}
      .dump();
}

}  // namespace demo
