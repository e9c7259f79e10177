#include "playerx/app/session/FilmOptionsJson.h"

#include "playerx/app/model/JsonMembers.h"

namespace playerx::session {

using Json = nlohmann::ordered_json;

namespace {

/// Every text of the options under its name.
template <class Options, class Do>
void forEachText(Options& options, const Do& act) {
  act("username", options.username);
  act("password", options.password);
  act("referer", options.referer);
  act("netrcFile", options.netrcFile);
  act("cookieFile", options.cookieFile);
  act("sha256", options.sha256);
}

}  // namespace

Json jsonOf(const FilmOptions& options) {
  Json object = Json::object();
  forEachText(options, [&object](const char* name, const std::string& text) {
    if (!text.empty()) object[name] = text;
  });
  if (options.tries > 0) object["tries"] = options.tries;
  if (options.timeout.count() > 0) object["timeoutSeconds"] = options.timeout.count();
  if (!options.headers.empty()) object["headers"] = options.headers;
  if (options.hasChecksumFile) object["hasChecksumFile"] = true;
  return object;
}

std::optional<FilmOptions> filmOptionsOf(const Json& object) {
  model::JsonMembers members(object);
  FilmOptions options;
  std::uint32_t seconds = 0;
  forEachText(options,
              [&members](const char* name, std::string& text) { members.take(name, text); });
  members.take("tries", options.tries);
  if (members.has("tries") && options.tries == 0) members.fail();
  members.take("timeoutSeconds", seconds);
  if (members.has("timeoutSeconds") && seconds == 0) members.fail();
  members.takeEach("headers", options.headers, [](const Json& value) {
    return value.is_string() ? std::optional(value.get<std::string>()) : std::nullopt;
  });
  members.take("hasChecksumFile", options.hasChecksumFile);
  options.timeout = std::chrono::seconds(seconds);
  return members.isGood() ? std::optional(options) : std::nullopt;
}

}  // namespace playerx::session
