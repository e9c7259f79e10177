#include "playerx/cli/ExplainCommand.h"

#include <QString>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "KPIM/Helper.h"
#include "KPX/OSUtilities.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "VeskPlayerX/ZPSServicesInterface.h"
#include "kvpm/PathTools.h"
#include "kvpm/StringTools.h"
#include "playerx/app/inputs/TicketFile.h"
#include "playerx/app/model/TextFormat.h"
#include "playerx/app/reasons/HostName.h"
#include "playerx/app/reasons/ServerProbe.h"
#include "playerx/app/session/PlayerHost.h"
#include "playerx/cli/Options.h"

namespace playerx {

namespace {

using kvpm::StringTools;
using Json = nlohmann::ordered_json;

/// Servers are asked for this many films of a ticket; more are listed without their sizes.
constexpr std::size_t kMostQuestions = 50;

/// What is said of one film or one problem.
struct Finding {
  std::string title;
  std::string provider;
  std::string url;
  std::optional<std::uint64_t> size;
  std::optional<bool> fits;
  std::string note;  ///< what keeps the film away, or is to be known
  int line = 0;
  bool isFilm = false;
};

std::string narrow(const std::wstring& text) { return StringTools::wStringToString(text); }

/// A download needs twice its size and a little, where films go and where they arrive.
bool hasRoom(const std::string& folder, std::uint64_t size) {
  unsigned long long free = 0;
  if (!VeskPlayerX::OSUtilities::getFreeSpace(QString::fromStdString(folder), &free)) return true;
  return free / 2 >= size && free >= 2 * size + size / 7168;
}

bool fits(std::uint64_t size) {
  return hasRoom(narrow(kvpm::PathTools::getVeskMoviesFolder()), size) &&
         hasRoom(VeskPlayerX::OSUtilities::getTempPath().toStdString(), size);
}

Finding findingOf(const TicketFilm& film, bool askServer) {
  Finding finding{narrow(film.title.empty() ? kvpm::PathTools::getFileName(film.url) : film.title),
                  narrow(film.provider),
                  narrow(film.url),
                  {},
                  {},
                  "",
                  film.line,
                  true};
  if (finding.provider.empty()) finding.provider = hostOf(finding.url);
  if (!askServer) return finding;
  const ProbeResult probe = probeServer(finding.url, trustedAuthorities(), {});
  if (const std::optional<FailureReason> reason = reasonFromProbe(probe)) {
    finding.note = reason->sentence;
  } else {
    finding.size = static_cast<std::uint64_t>(probe.length);
    finding.fits = fits(*finding.size);
  }
  return finding;
}

Finding findingOf(const VeskDrmTicketData& record) {
  Finding finding;
  finding.title = narrow(record.title);
  finding.provider = narrow(record.contentProviderDisplayName);
  finding.note = "Protected: address and size come from the online services when it is downloaded.";
  finding.isFilm = true;
  return finding;
}

Finding problem(int line, const std::string& sentence) {
  Finding finding;
  finding.line = line;
  finding.note = sentence;
  return finding;
}

std::vector<Finding> protectedFilms(const std::wstring& path, PlayerHost& host) {
  KPIM::Helper<VeskPlayerX::ZPSServicesInterface> services(VeskPlayerX::DIN_ZPSServices);
  const KPIM::Context::PluginInterfaceFilter filter(VeskPlayerX::DIN_ZPSServices);
  const KPIM::Context::SimplePluginInfoSelector selector;
  if (services.loadPlugin(&host.context(), filter, selector, true) != KPIM::kSuccess) return {};
  std::vector<Finding> findings;
  for (VeskDrmTicketData* record : services->readTicket(path)) {
    const std::unique_ptr<VeskDrmTicketData> owned(record);
    findings.push_back(findingOf(*owned));
  }
  return findings;
}

std::vector<Finding> clearFilms(const std::wstring& path) {
  std::string problemOfFile;
  const std::optional<std::wstring> text = readTicketText(path, &problemOfFile);
  if (!text) return {problem(0, problemOfFile)};
  if (isSealedTicket(*text)) {
    return {problem(0, "The online services name no film for this protected ticket.")};
  }
  const TicketCheck check = checkClearTicket(*text);
  std::vector<Finding> findings;
  for (const TicketFilm& film : check.films) {
    findings.push_back(findingOf(film, findings.size() < kMostQuestions));
  }
  for (const TicketProblem& each : check.problems) {
    findings.push_back(problem(each.line, each.sentence));
  }
  return findings;
}

std::vector<Finding> findingsOf(const std::string& ticket, PlayerHost& host) {
  if (ticket.find("://") != std::string::npos) {
    return {problem(0, "explain takes ticket files, not addresses.")};
  }
  const std::wstring path =
      StringTools::stripBeginingAndEndChar(StringTools::stringToWString(ticket), L'"');
  if (const auto refusal = refusalOfTicket(path)) return {problem(0, refusal->sentence)};
  const std::vector<Finding> findings = protectedFilms(path, host);
  return findings.empty() ? clearFilms(path) : findings;
}

void printForPeople(const std::string& ticket, const Finding& finding, std::ostream& out) {
  out << printable(ticket);
  if (finding.line > 0) out << ", line " << finding.line;
  out << ": ";
  if (finding.isFilm) {
    out << printable(finding.title) << " from " << printable(finding.provider);
    if (!finding.url.empty()) out << ", " << printable(finding.url);
    if (finding.size) out << ", " << formatBytes(*finding.size);
    if (finding.fits) out << (*finding.fits ? ", fits" : ", does not fit: free some space");
    if (!finding.note.empty()) out << ". ";
  }
  out << printable(finding.note) << std::endl;
}

void printJson(const std::string& ticket, const Finding& finding, std::ostream& out) {
  Json object{{"event", finding.isFilm ? "explained" : "problem"},
              {"ticket", ticket},
              {"line", finding.line}};
  if (finding.isFilm) {
    object["title"] = finding.title;
    object["provider"] = finding.provider;
    object["url"] = finding.url;
    object["size"] = finding.size ? Json(*finding.size) : Json();
    object["fits"] = finding.fits ? Json(*finding.fits) : Json();
  }
  object["note"] = finding.note;
  out << object.dump(-1, ' ', false, Json::error_handler_t::replace) << std::endl;
}

}  // namespace

int runExplainCommand(const Options& options, PlayerHost& host, std::ostream& out) {
  int status = kExitDone;
  for (const std::string& ticket : options.inputs) {
    bool namesSomething = false;
    for (const Finding& finding : findingsOf(ticket, host)) {
      namesSomething = namesSomething || finding.isFilm;
      (options.json ? printJson : printForPeople)(ticket, finding, out);
    }
    if (!namesSomething) status = kExitFailed;
  }
  return status;
}

}  // namespace playerx
