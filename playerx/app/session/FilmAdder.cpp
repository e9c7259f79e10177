#include "playerx/app/session/FilmAdder.h"

#include <fcntl.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <utility>
#include <vector>

#include "VeskPlayerX/DownloadManagerInterface.h"
#include "kvpm/StringTools.h"
#include "playerx/app/inputs/Input.h"
#include "playerx/app/inputs/InputText.h"
#include "playerx/app/inputs/OptionFault.h"
#include "playerx/app/inputs/TicketFile.h"
#include "playerx/app/session/KnownFilm.h"
#include "playerx/platform/Descriptor.h"
#include "playerx/transfers/Address.h"

namespace playerx::session {

using model::ItemState;

namespace {

constexpr char kAskedWithout[] =
    "User names, headers and cookies are for the film alone: the question of how long it is (HEAD) "
    "is "
    "asked without them. A server that wants them for that too cannot be used.";

/// Whether a server may answer the question for the size otherwise than the request of the film.
bool carriesMore(const FilmOptions& options) {
  return !options.username.empty() || !options.password.empty() || !options.netrcFile.empty() ||
         !options.headers.empty() || !options.referer.empty() || !options.cookieFile.empty();
}

/// What of the request is not done to a film that lies there already, as the end of a sentence.
std::string whatIsNotDone(const std::filesystem::path& film, const Request& request) {
  const bool hasSum = !request.options.sha256.empty() || request.options.hasChecksumFile;
  if (hasSum) return "; its checksum was not compared: --again fetches it anew and compares it.";
  const bool hasOtherName = !request.name.empty() && film.filename() != request.name;
  return hasOtherName ? "; --again fetches it under the other name." : "";
}

/// What becomes of an unfinished film that the queue holds already, as the end of a sentence.
const char* howItGoesOn(bool hasFailed, bool starts) {
  if (hasFailed && starts) return " had failed; trying it again.";
  if (hasFailed) return " had failed; it is queued again.";
  return starts ? " is in the queue already; going on with it." : " is in the queue already.";
}

/// libcurl would let others read it.
void makeCookieFile(const std::string& path) {
  if (path.empty()) return;
  const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (file.get() < 0) errno = 0;
}

/// Leaves the first of several spellings of an address.
void dropRepeated(std::vector<std::string>& addresses) {
  std::set<std::string> seen;
  std::erase_if(addresses, [&seen](const std::string& address) {
    const std::string form = formOf(address);
    return !seen.insert(form.empty() ? address : form).second;
  });
}

}  // namespace

Reply FilmAdder::add(const Request& request) {
  const std::string fault = inputs::faultOf(request.options);
  if (!fault.empty()) return {Reply::Outcome::kWrongUse, {fault}};
  const bool staysPaused = !request.starts && session_.manager().isPaused();
  Reply reply;
  bool isMoreCarried = false;
  makeCookieFile(request.options.cookieFile);
  for (const std::string& text : request.inputs) {
    const Input input = readInput(text, request.options);
    const std::size_t before = reply.items.size();
    addInput(input, request, reply);
    isMoreCarried |= reply.items.size() > before && carriesMore(input.options);
  }
  if (staysPaused) session_.pause();
  if (request.starts && session_.manager().isPaused()) session_.manager().resume();
  if (request.inputs.empty()) goOnWithQueue(reply);
  for (const ItemState& item : reply.items) {
    if (request.plays) watch_.playWhenReady(item.id);
  }
  if (isMoreCarried) reply.notes.push_back(kAskedWithout);
  if (!reply.refused.empty()) reply.outcome = Reply::Outcome::kWrongUse;
  return reply;
}

/// A request without inputs is for all films that are not complete.
void FilmAdder::goOnWithQueue(Reply& reply) {
  watch_.update();
  reply.items = watch_.queue().kept();
  std::erase_if(reply.items,
                [](const ItemState& item) { return !model::isUnfinished(item.status); });
  for (const ItemState& item : reply.items) reply.known.insert(item.id);
}

FilmAdder::Input FilmAdder::readInput(const std::string& text, const FilmOptions& options) {
  if (inputs::isTicketPath(text)) return {text, options, true};
  const SplitAddress split = splitCredentials(inputs::cleaned(text));
  Input input{split.address, options};
  const bool namesUser = !split.username.empty() || !split.password.empty();
  if (namesUser) input.options.username = split.username;
  if (namesUser) input.options.password = split.password;
  return input;
}

void FilmAdder::addInput(const Input& input, const Request& request, Reply& reply) {
  if (!inputs::faultOfUser(input.options).empty()) {
    reply.refused.push_back({input.text, reasons::explain(reasons::Reason::kUserNotText)});
    return;
  }
  if (request.again && isComplete(input.text)) session_.forgetFilmOptions(input.text);
  if (input.hasOptions() && !input.isTicket) session_.addFilmOptions(input.text, input.options);
  bool hasTwins = false;
  const bool isThere = input.isTicket ? goOnWithTicket(input, request, reply, hasTwins)
                                      : goOnWith(input, request, reply);
  if (!isThere) addAnew(input, request, reply, hasTwins);
}

/// Whether the queue holds all films of a clear ticket, so that it need not be added; `hasTwins`
/// tells whether it holds any, or the ticket names one twice.
bool FilmAdder::goOnWithTicket(const Input& input, const Request& request, Reply& reply,
                               bool& hasTwins) {
  std::vector<std::string> films =
      inputs::filmsOfTicket(kvpm::StringTools::stringToWString(inputs::unquoted(input.text)));
  const std::size_t named = films.size();
  dropRepeated(films);
  hasTwins = films.size() < named;
  if (request.again) return false;
  const auto known = std::count_if(films.begin(), films.end(),
                                   [this](const std::string& film) { return !isToAdd(film); });
  hasTwins |= known > 0;
  if (films.empty() || known < std::ssize(films)) return false;
  for (const std::string& film : films) {
    if (input.hasOptions()) session_.addFilmOptions(film, input.options);
    goOnWith({film, input.options}, request, reply);
  }
  return true;
}

/// Whether a ticket has to bring the film of an address: the queue lacks it, or held it complete
/// although its file is gone, and is rid of it now.
bool FilmAdder::isToAdd(const std::string& address) {
  const std::optional<ItemState> known = findKnownFilm(watch_.queue(), address);
  if (!known) return true;
  const bool isGone =
      known->status == DownloadStatusCompleted && findFilm(*known, session_.places().media).empty();
  if (isGone) session_.manager().remove(known->id);
  if (isGone) watch_.update();
  return isGone;
}

/// Whether the queue holds the film of an address complete.
bool FilmAdder::isComplete(const std::string& address) const {
  const std::optional<ItemState> known = findKnownFilm(watch_.queue(), address);
  return known && known->status == DownloadStatusCompleted;
}

/// Whether the film of an address is in the queue, so that it need not be added.
bool FilmAdder::goOnWith(const Input& input, const Request& request, Reply& reply) {
  if (!findKnownFilm(watch_.queue(), input.text)) return false;
  watch_.update();
  const std::optional<ItemState> known = findKnownFilm(watch_.queue(), input.text);
  if (!known) return false;
  if (known->status == DownloadStatusCompleted) {
    return goOnWithComplete(*known, input, request, reply);
  }
  goOnWithUnfinished(*known, input, request, reply);
  return true;
}

void FilmAdder::goOnWithUnfinished(const ItemState& film, const Input& input,
                                   const Request& request, Reply& reply) {
  if (!request.name.empty()) nameFilm(film.id, request.name);
  const bool hasFailed = film.status == DownloadStatusFailed;
  if (hasFailed) {
    watch_.clearTopFor(film.id);
    watch_.queueAgain(film.id);
  } else if (film.status == DownloadStatusStopped || session_.view().isKeptStopped(film.id)) {
    // The manager has a paused item say "queued" for the moment in which another goes before it.
    letGoOn_(film.id);
  }
  reply.notes.push_back(input.text + howItGoesOn(hasFailed, request.starts));
  watch_.update();
  if (const auto now = findKnownFilm(watch_.queue(), input.text)) {
    reply.items.push_back(*now);
    reply.known.insert(now->id);
  }
}

bool FilmAdder::goOnWithComplete(const ItemState& film, const Input& input, const Request& request,
                                 Reply& reply) {
  const std::string place = findFilm(film, session_.places().media);
  if (place.empty() || request.again) {
    session_.manager().remove(film.id);
    return false;
  }
  const std::string rest = whatIsNotDone(place, request);
  (rest.empty() ? reply.results : reply.notes)
      .push_back(input.text + " is already there: " + place + rest);
  reply.there.push_back(film);
  reply.there.back().path = place;
  if (request.plays) watch_.playWhenReady(film.id);
  return true;
}

void FilmAdder::addAnew(const Input& input, const Request& request, Reply& reply, bool hasTwins) {
  // The addresses of a ticket are known once its films are in the queue.
  const bool getsOptions = input.isTicket && input.hasOptions();
  const bool mayBeThere = !input.isTicket && !request.again && session_.isStarted();
  if (mayBeThere) session_.takeFilmBack(input.text);
  whilePaused(getsOptions || hasTwins, [&] {
    handOver(input, reply);
    const std::vector<std::string> twins =
        hasTwins ? removeTwins(request.again) : std::vector<std::string>();
    noteAdded(input, request, reply);
    for (const std::string& address : twins) goOnWith({address, input.options}, request, reply);
  });
}

/// Gives the input to the manager.
void FilmAdder::handOver(const Input& input, Reply& reply) {
  const auto refusal =
      inputs::addInput(input.text, session_.manager(), [this] { return session_.takeMessages(); });
  const std::string shown = input.isTicket ? input.text : withoutCredentials(input.text);
  if (refusal) reply.refused.push_back({shown, *refusal});
}

/// Gives the films that have come into the queue their names and options, and lists them.
void FilmAdder::noteAdded(const Input& input, const Request& request, Reply& reply) {
  const bool getsOptions = input.isTicket && input.hasOptions();
  for (const unsigned int id : watch_.update()) {
    const std::optional<ItemState> item = watch_.queue().find(id);
    if (!item) continue;
    if (getsOptions && !item->url.empty()) session_.addFilmOptions(item->url, input.options);
    if (!request.name.empty()) nameFilm(item->id, request.name);
    reply.items.push_back(*item);
  }
}

/// Takes the films out again that a ticket has brought twice, or, unless they are fetched anew,
/// although the queue held them before; returns the addresses of the latter. The watch has not yet
/// seen what came.
std::vector<std::string> FilmAdder::removeTwins(bool isAnew) {
  const std::set<unsigned int> old = watch_.queue().ids();
  std::vector<std::string> twins;
  std::vector<ItemState> fresh;
  for (const auto& [id, status, version] : session_.reader().getVersions()) {
    if (old.contains(id)) continue;
    const std::unique_ptr<VeskPlayerX::DownloadItemInterface> copy(session_.reader().getCopy(id));
    if (copy == nullptr) continue;
    const ItemState item = model::stateOf(*copy);
    const bool isOld = !isAnew && findKnownFilm(watch_.queue(), item.url);
    if (isOld) twins.push_back(item.url);
    if (isOld || findKnownFilm(fresh, item.url)) {
      session_.manager().remove(id);
    } else {
      fresh.push_back(item);
    }
  }
  return twins;
}

/// The manager fetches a film to the name that its item has; one without, to that of its address.
void FilmAdder::nameFilm(unsigned int id, const std::string& name) {
  const std::string path = session_.places().media + "/" + name;
  // The manager may have begun already, with a copy of the item.
  whilePaused(true,
              [&] { session_.manager().updatePath(id, kvpm::StringTools::stringToWString(path)); });
}

void FilmAdder::whilePaused(bool isNeeded, const std::function<void()>& change) {
  VeskPlayerX::DownloadManagerInterface& manager = session_.manager();
  const bool isToPause = isNeeded && !manager.isPaused();
  if (isToPause) session_.pause();
  change();
  if (isToPause) manager.resume();
}

}  // namespace playerx::session
