#include "playerx/cli/ExplainCommand.h"

#include <nlohmann/json.hpp>

#include "KPIM/Helper.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "VeskPlayerX/ZPSServicesInterface.h"
#include "playerx/app/inputs/InputText.h"
#include "playerx/app/inputs/TicketContents.h"
#include "playerx/app/model/JsonMembers.h"
#include "playerx/app/model/TextFormat.h"
#include "playerx/cli/Reporter.h"
#include "playerx/cli/TerminalText.h"

namespace playerx::cli {

using inputs::TicketFinding;
using model::formatBytes;

namespace {

using Json = nlohmann::ordered_json;

void printForPeople(const std::string& ticket, const TicketFinding& finding, std::ostream& out) {
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

void printJson(const std::string& ticket, const TicketFinding& finding, std::ostream& out) {
  Json object{{"version", kJsonVersion},
              {"event", finding.isFilm ? "explained" : "problem"},
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
  out << model::dumped(object) << std::endl;
}

}  // namespace

int runExplainCommand(const Options& options, KPIM::Context& plugins, const reasons::Probe& probe,
                      std::ostream& out) {
  const auto services =
      KPIM::load<VeskPlayerX::ZPSServicesInterface>(&plugins, VeskPlayerX::DIN_ZPSServices);
  VeskPlayerX::ZPSServicesInterface* const reader = services ? services->get() : nullptr;
  int status = kExitDone;
  for (const std::string& ticket : options.request.inputs) {
    bool namesSomething = false;
    const std::string shown = inputs::displayPath(ticket);
    for (const TicketFinding& finding : inputs::examineTicket(ticket, reader, probe)) {
      namesSomething = namesSomething || finding.isFilm;
      (options.json ? printJson : printForPeople)(shown, finding, out);
    }
    if (!namesSomething) status = kExitFailed;
  }
  return status;
}

}  // namespace playerx::cli
