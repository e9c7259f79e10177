#include "playerx/app/door/Protocol.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "playerx/app/door/RequestFault.h"
#include "playerx/app/door/RequestWords.h"
#include "playerx/app/model/JsonMembers.h"
#include "playerx/app/session/FilmOptionsJson.h"

namespace playerx::session {

using Json = nlohmann::ordered_json;

NLOHMANN_JSON_SERIALIZE_ENUM(Reply::Outcome, {{Reply::Outcome::kDone, "done"},
                                              {Reply::Outcome::kFailed, "failed"},
                                              {Reply::Outcome::kWrongUse, "wrong_use"}})

NLOHMANN_JSON_SERIALIZE_ENUM(QueueEvent::Kind, {{QueueEvent::Kind::kAdded, "added"},
                                                {QueueEvent::Kind::kChanged, "changed"},
                                                {QueueEvent::Kind::kFinished, "finished"},
                                                {QueueEvent::Kind::kFailed, "failed"},
                                                {QueueEvent::Kind::kRemoved, "removed"},
                                                {QueueEvent::Kind::kMoved, "moved"},
                                                {QueueEvent::Kind::kNote, "note"},
                                                {QueueEvent::Kind::kQueue, "queue"}})

}  // namespace playerx::session

namespace playerx::door {

using model::ItemState;
using Members = model::JsonMembers;
using model::Progress;
using model::QueueProgress;
using reasons::Explanation;
using session::QueueEvent;
using session::Refusal;
using session::Reply;
using session::Request;

namespace {

using Json = nlohmann::ordered_json;

/// Messages nest less than this.
constexpr int kDeepestNesting = 8;

QByteArray lineOf(const Json& object) { return QByteArray::fromStdString(model::dumped(object)); }

bool isOfItem(const QueueEvent& event) {
  using Kind = QueueEvent::Kind;
  return event.kind != Kind::kNote && event.kind != Kind::kQueue && event.kind != Kind::kMoved;
}

/// The object that a line holds; any other value for a line that holds none.
Json objectOf(const QByteArray& line) {
  // Deeper values are dropped: a copy, which a growing object makes too, recurses as deep.
  const auto isKept = [](int depth, Json::parse_event_t, const Json&) {
    return depth <= kDeepestNesting;
  };
  Json value = Json::parse(line.begin(), line.end(), isKept, false);
  if (!value.is_object()) return {};
  return value;
}

Json jsonOf(const ItemState& item) {
  return {
      {"id", item.id},           {"title", item.title}, {"provider", item.provider},
      {"url", item.url},         {"path", item.path},   {"status", model::statusWord(item.status)},
      {"percent", item.percent}, {"size", item.size},   {"playable", item.playable}};
}

std::optional<DownloadStatusEnumType> statusOf(const std::string& word) {
  for (int value = DownloadStatusPaused; value <= DownloadStatusHeld; ++value) {
    const auto status = static_cast<DownloadStatusEnumType>(value);
    if (word == model::statusWord(status)) return status;
  }
  return std::nullopt;
}

std::optional<ItemState> itemOf(const Json& object) {
  Members members(object);
  ItemState item;
  std::string status;
  members.take("id", item.id);
  members.take("title", item.title);
  members.take("provider", item.provider);
  members.take("url", item.url);
  members.take("path", item.path);
  members.take("status", status);
  members.take("percent", item.percent);
  members.take("size", item.size);
  members.take("playable", item.playable);
  const auto known = statusOf(status);
  if (!members.isGood() || !known) return std::nullopt;
  item.status = *known;
  return item;
}

Json jsonOf(const Progress& progress) {
  Json object{{"bytesPerSecond", progress.bytesPerSecond},
              {"silentSeconds", progress.silentSeconds},
              {"isRetrying", progress.isRetrying}};
  if (!progress.partialPath.empty()) object["partialPath"] = progress.partialPath;
  if (progress.arrived) object["arrived"] = *progress.arrived;
  if (progress.secondsLeft) object["secondsLeft"] = *progress.secondsLeft;
  return object;
}

std::optional<Progress> progressOf(const Json& object) {
  Members members(object);
  Progress progress;
  members.take("bytesPerSecond", progress.bytesPerSecond);
  members.take("silentSeconds", progress.silentSeconds);
  members.take("isRetrying", progress.isRetrying);
  members.take("partialPath", progress.partialPath);
  if (members.has("arrived")) members.take("arrived", progress.arrived.emplace());
  if (members.has("secondsLeft")) members.take("secondsLeft", progress.secondsLeft.emplace());
  return members.isGood() ? std::optional(progress) : std::nullopt;
}

Json jsonOf(const QueueProgress& queue) {
  return {{"items", queue.items}, {"completed", queue.completed},       {"arrived", queue.arrived},
          {"total", queue.total}, {"unknownSizes", queue.unknownSizes}, {"paused", queue.isPaused}};
}

std::optional<QueueProgress> queueProgressOf(const Json& object) {
  Members members(object);
  QueueProgress queue;
  members.take("items", queue.items);
  members.take("completed", queue.completed);
  members.take("arrived", queue.arrived);
  members.take("total", queue.total);
  members.take("unknownSizes", queue.unknownSizes);
  members.take("paused", queue.isPaused);
  return members.isGood() ? std::optional(queue) : std::nullopt;
}

Json jsonOf(const Explanation& reason) {
  return {{"number", static_cast<std::int32_t>(reason.reason)},
          {"code", reason.code()},
          {"happened", reason.happened},
          {"advice", reason.advice}};
}

std::optional<Explanation> explanationOf(const Json& object) {
  Members members(object);
  Explanation reason;
  std::int32_t number = 0;
  members.take("number", number);
  members.take("happened", reason.happened);
  members.take("advice", reason.advice);
  if (!members.isGood()) return std::nullopt;
  reason.reason = static_cast<reasons::Reason>(number);
  return reason;
}

std::optional<Refusal> refusalOf(const Json& object) {
  Members members(object);
  Refusal refusal;
  members.take("input", refusal.input);
  if (!members.isGood() || !members.has("reason")) return std::nullopt;
  const auto reason = explanationOf(members.at("reason"));
  if (!reason) return std::nullopt;
  refusal.reason = *reason;
  return refusal;
}

std::optional<std::string> textOf(const Json& value) {
  return value.is_string() ? std::optional(value.get<std::string>()) : std::nullopt;
}

/// What of a request can be read; the members tell whether all could.
Request requestOf(Members& members) {
  Request request;
  members.take("action", request.action);
  if (members.has("id")) members.take("id", request.id.emplace());
  members.take("position", request.position);
  members.takeEach("inputs", request.inputs, textOf);
  members.take("name", request.name);
  members.take("starts", request.starts);
  members.take("again", request.again);
  members.take("plays", request.plays);
  if (request.action == Request::Action::kMove) members.take("direction", request.direction);
  members.take("before", request.before);
  members.take("withFilm", request.withFilm);
  members.take("dryRun", request.dryRun);
  if (members.has("options")) {
    const auto options = session::filmOptionsOf(members.at("options"));
    options ? void(request.options = *options) : members.fail();
  }
  if (members.has("rateLimit")) members.take("rateLimit", request.rateLimit.emplace());
  return request;
}

std::optional<Reply> replyOf(Members members) {
  Reply reply;
  members.take("reply", reply.outcome);
  members.take("paused", reply.isPaused);
  members.takeEach("notes", reply.notes, textOf);
  members.takeEach("results", reply.results, textOf);
  members.takeEach("refused", reply.refused, refusalOf);
  members.takeEach("there", reply.there, itemOf);
  members.takeEach("items", reply.items, [&reply](const Json& object) {
    const std::optional<ItemState> item = itemOf(object);
    if (!item) return item;
    if (object.value("known", Json(false)) == Json(true)) reply.known.insert(item->id);
    if (!object.contains("progress")) return item;
    const auto progress = progressOf(object.at("progress"));
    if (progress) reply.progress[item->id] = *progress;
    return progress ? item : std::nullopt;
  });
  return members.isGood() ? std::optional(reply) : std::nullopt;
}

std::optional<QueueEvent> eventOf(Members members) {
  QueueEvent event;
  members.take("event", event.kind);
  members.take("sentence", event.sentence);
  if (isOfItem(event) && members.has("item")) {
    const auto item = itemOf(members.at("item"));
    item ? void(event.item = *item) : members.fail();
  }
  if (event.kind == QueueEvent::Kind::kQueue && members.has("queue")) {
    const auto queue = queueProgressOf(members.at("queue"));
    queue ? void(event.queue = *queue) : members.fail();
  }
  if (event.kind == QueueEvent::Kind::kChanged && members.has("progress")) {
    const auto progress = progressOf(members.at("progress"));
    progress ? void(event.progress = *progress) : members.fail();
  }
  if (event.kind == QueueEvent::Kind::kFailed && members.has("reason")) {
    const auto reason = explanationOf(members.at("reason"));
    reason ? void(event.reason = *reason) : members.fail();
  }
  return members.isGood() ? std::optional(event) : std::nullopt;
}

}  // namespace

QByteArray write(const Greeting& greeting) {
  Json object{{"queue", "playerx"},
              {"protocol", greeting.protocol},
              {"version", greeting.version},
              {"pid", greeting.pid}};
  if (greeting.isBusy) object["busy"] = true;
  return lineOf(object);
}

QByteArray write(const Request& request) {
  static const Request kUsual;
  Json object{{"action", request.action}};
  if (request.id) object["id"] = *request.id;
  if (request.position != kUsual.position) object["position"] = request.position;
  if (!request.inputs.empty()) object["inputs"] = request.inputs;
  if (!request.name.empty()) object["name"] = request.name;
  if (request.starts != kUsual.starts) object["starts"] = request.starts;
  if (request.again) object["again"] = true;
  if (request.plays) object["plays"] = true;
  if (request.action == Request::Action::kMove) object["direction"] = request.direction;
  if (request.before != kUsual.before) object["before"] = request.before;
  if (request.withFilm) object["withFilm"] = true;
  if (request.dryRun) object["dryRun"] = true;
  if (request.options != FilmOptions{}) object["options"] = session::jsonOf(request.options);
  if (request.rateLimit) object["rateLimit"] = *request.rateLimit;
  return lineOf(object);
}

QByteArray write(const Reply& reply) {
  Json object{{"reply", reply.outcome}};
  if (!reply.notes.empty()) object["notes"] = reply.notes;
  if (!reply.results.empty()) object["results"] = reply.results;
  for (const Refusal& refusal : reply.refused) {
    object["refused"].push_back({{"input", refusal.input}, {"reason", jsonOf(refusal.reason)}});
  }
  if (reply.isPaused) object["paused"] = true;
  for (const ItemState& item : reply.items) {
    Json& element = object["items"].emplace_back(jsonOf(item));
    if (reply.known.contains(item.id)) element["known"] = true;
    const auto progress = reply.progress.find(item.id);
    if (progress != reply.progress.end()) element["progress"] = jsonOf(progress->second);
  }
  for (const ItemState& item : reply.there) object["there"].push_back(jsonOf(item));
  return lineOf(object);
}

QByteArray write(const QueueEvent& event) {
  Json object{{"event", event.kind}};
  if (isOfItem(event)) object["item"] = jsonOf(event.item);
  if (event.kind == QueueEvent::Kind::kQueue) object["queue"] = jsonOf(event.queue);
  if (event.kind == QueueEvent::Kind::kChanged) object["progress"] = jsonOf(event.progress);
  if (!event.sentence.empty()) object["sentence"] = event.sentence;
  if (event.kind == QueueEvent::Kind::kFailed) object["reason"] = jsonOf(event.reason);
  return lineOf(object);
}

std::optional<Greeting> readGreeting(const QByteArray& line) {
  const Json object = objectOf(line);
  Members members(object);
  std::string queue;
  Greeting greeting;
  members.take("queue", queue);
  members.take("protocol", greeting.protocol);
  members.take("version", greeting.version);
  members.take("pid", greeting.pid);
  members.take("busy", greeting.isBusy);
  return members.isGood() && queue == "playerx" ? std::optional(greeting) : std::nullopt;
}

std::optional<Request> readRequest(const QByteArray& line, std::string* fault) {
  const Json object = objectOf(line);
  Members members(object);
  const Request request = requestOf(members);
  const std::string found = faultOf(request, members);
  if (fault != nullptr) *fault = found;
  const bool isRequest = members.isGood() && members.has("action");
  return isRequest && found.empty() ? std::optional(request) : std::nullopt;
}

std::optional<Answer> readAnswer(const QByteArray& line) {
  const Json object = objectOf(line);
  const Members members(object);
  if (members.has("reply")) return replyOf(members);
  if (members.has("event")) return eventOf(members);
  return std::nullopt;
}

}  // namespace playerx::door
