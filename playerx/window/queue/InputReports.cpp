#include "playerx/window/queue/InputReports.h"

#include "KPIM/Helper.h"
#include "VeskPlayerX/InterfaceIds.h"
#include "VeskPlayerX/ZPSServicesInterface.h"
#include "playerx/app/inputs/TicketContents.h"
#include "playerx/window/model/Sentences.h"

namespace playerx::window {

namespace {

/// A look without the network: the ticket's own words are enough to know whether it is doubtful.
reasons::ProbeResult notAsked(const std::string& address, const std::stop_token&) {
  reasons::ProbeResult result;
  result.address = address;
  result.status = 200;
  result.length = 1;
  return result;
}

QString sentenceOf(const inputs::TicketFinding& finding) {
  return finding.reason ? reasonSentence(*finding.reason) : queueSentence(finding.note);
}

}  // namespace

void addReply(const session::Reply& reply, InputReport& report) {
  const bool isAnswered = reply.outcome != session::Reply::Outcome::kFailed;
  if (isAnswered) report.alreadyThere += static_cast<int>(reply.known.size() + reply.there.size());
  for (const session::Refusal& refusal : reply.refused) {
    report.refused.append({QString::fromStdString(refusal.input),
                           QString::fromStdString(refusal.reason.code()),
                           reasonSentence(refusal.reason)});
  }
}

TicketReport reportOnTicket(const QString& path, PluginContext& plugins) {
  using Services = VeskPlayerX::ZPSServicesInterface;
  const auto services = KPIM::load<Services>(&plugins, VeskPlayerX::DIN_ZPSServices);
  TicketReport report;
  report.path = path;
  for (const inputs::TicketFinding& finding :
       inputs::examineTicket(path.toStdString(), services ? services->get() : nullptr, notAsked)) {
    if (finding.isFilm) ++report.films;
    const bool isFirstProblem = !finding.isFilm && report.problem.isEmpty();
    if (!isFirstProblem) continue;
    report.problem = sentenceOf(finding);
    report.line = finding.line;
  }
  return report;
}

}  // namespace playerx::window
