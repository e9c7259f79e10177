#include "playerx/app/inputs/TicketContents.h"

#include <QString>
#include <algorithm>
#include <memory>
#include <span>

#include "KPX/OSUtilities.h"
#include "VeskPlayerX/ZPSServicesInterface.h"
#include "kvpm/PathTools.h"
#include "kvpm/StringTools.h"
#include "persistence/ClearTicket.h"
#include "playerx/app/inputs/InputText.h"
#include "playerx/app/inputs/TicketFile.h"
#include "playerx/app/model/FilmCheck.h"

namespace playerx::inputs {

namespace {

using kvpm::StringTools;
using persistence::ClearTicket;
using persistence::TicketFault;
using persistence::TicketFilm;
using persistence::TicketProblem;

/// Servers are asked for this many films of a ticket; more are listed without their sizes.
constexpr std::size_t kMostQuestions = 50;

/// Faults that are listed of one ticket, which may hold millions, are as many as films.
constexpr std::size_t kMostListed = kMostFilms;

std::string narrow(const std::wstring& text) { return StringTools::wStringToString(text); }

bool hasRoom(const std::string& folder, std::uint64_t size) {
  unsigned long long free = 0;
  if (!VeskPlayerX::OSUtilities::getFreeSpace(QString::fromStdString(folder), &free)) return true;
  return free >= model::spaceNeededFor(size);
}

bool fits(std::uint64_t size) {
  return hasRoom(narrow(kvpm::PathTools::getVeskMoviesFolder()), size) &&
         hasRoom(VeskPlayerX::OSUtilities::getTempPath().toStdString(), size);
}

TicketFinding problem(int line, const std::string& sentence) {
  return {.line = line, .note = sentence};
}

TicketFinding refusal(const reasons::Explanation& reason) {
  return {.note = reason.sentence(), .reason = reason};
}

TicketFinding findingOf(const TicketFilm& film) {
  TicketFinding finding{.isFilm = true,
                        .line = static_cast<int>(film.line),
                        .title = narrow(film.title),
                        .provider = narrow(film.contentProvider),
                        .url = narrow(film.url)};
  if (finding.title.empty()) finding.title = narrow(kvpm::PathTools::getFileName(film.url));
  if (finding.provider.empty()) finding.provider = hostOf(finding.url);
  return finding;
}

TicketFinding findingOf(const VeskDrmTicketData& record) {
  return {.isFilm = true,
          .title = narrow(record.title),
          .provider = narrow(record.contentProviderDisplayName),
          .note =
              "Protected: address and size come from the online services when it is "
              "downloaded."};
}

void addSize(TicketFinding& finding, const reasons::Probe& probe) {
  const reasons::ProbeResult result = probe(finding.url, {});
  if (const auto explanation = reasons::explainProbe(result)) {
    finding.note = explanation->sentence();
    return;
  }
  finding.size = static_cast<std::uint64_t>(result.length);
  finding.fits = fits(*finding.size);
}

std::string sentenceOf(TicketProblem problem, const ClearTicket& ticket) {
  switch (problem) {
    case TicketProblem::kEmptyTicket:
      return "The ticket is empty.";
    case TicketProblem::kNoHeader:
      return "A ticket begins with the line TixVeskVersion=1.0.";
    case TicketProblem::kOtherVersion:
      return "This ticket's version is " + narrow(ticket.version) + "; only version 1.0 is known.";
    case TicketProblem::kNoStart:
      return "There is no line \"start\", so the ticket names no film.";
    case TicketProblem::kNoUrl:
      return "This film has no line \"url=\", so it cannot be fetched.";
    case TicketProblem::kUnclosed:
      return "This film has no line \"end\".";
    case TicketProblem::kUnclosedAtStart:
      return "This film has no line \"end\" before the next \"start\".";
    case TicketProblem::kEndOutsideABlock:
      return "There is an \"end\" without a \"start\".";
  }
  return {};
}

std::vector<TicketFinding> protectedFilms(const std::wstring& path,
                                          VeskPlayerX::ZPSServicesInterface& services) {
  std::vector<TicketFinding> findings;
  for (const VeskDrmTicketData* record : services.readTicket(path)) {
    findings.push_back(findingOf(*record));
  }
  return findings;
}

template <class Entry>
std::span<const Entry> firstOf(const std::vector<Entry>& entries) {
  return std::span(entries).first(std::min(entries.size(), kMostListed));
}

std::vector<TicketFinding> clearFilms(const std::wstring& path, const reasons::Probe& probe) {
  reasons::Explanation unreadable;
  const std::optional<std::wstring> text = readTicketText(path, &unreadable);
  if (!text) return {refusal(unreadable)};
  if (isSealedTicket(*text)) {
    return {problem(0, "The online services name no film for this protected ticket.")};
  }
  const ClearTicket contents = persistence::readClearTicket(*text);
  std::vector<TicketFinding> findings;
  for (const TicketFilm& film : firstOf(contents.films)) {
    findings.push_back(findingOf(film));
    if (findings.size() <= kMostQuestions) addSize(findings.back(), probe);
  }
  for (const TicketFault& fault : firstOf(contents.faults)) {
    findings.push_back(problem(static_cast<int>(fault.line), sentenceOf(fault.problem, contents)));
  }
  if (std::max(contents.films.size(), contents.faults.size()) > kMostListed) {
    findings.push_back(problem(0, "The rest of this ticket is not listed."));
  }
  return findings;
}

}  // namespace

std::vector<TicketFinding> examineTicket(const std::string& ticket,
                                         VeskPlayerX::ZPSServicesInterface* services,
                                         const reasons::Probe& probe) {
  if (ticket.find("://") != std::string::npos) {
    return {problem(0, "This is an address, not a ticket file.")};
  }
  const std::wstring path = StringTools::stringToWString(unquoted(ticket));
  if (const auto reason = refusalOfTicket(path)) return {refusal(*reason)};
  const std::vector<TicketFinding> films =
      services != nullptr ? protectedFilms(path, *services) : std::vector<TicketFinding>{};
  return films.empty() ? clearFilms(path, probe) : films;
}

}  // namespace playerx::inputs
