#include "playerx/app/TransferKnowledge.h"

#include <memory>

#include "KPIM/Helper.h"
#include "playerx/app/ServerProbe.h"
#include "playerx/app/TransferReason.h"
#include "playerx/framework/PluginContext.h"
#include "playerx/transfers/TransferReports.h"

namespace playerx {

namespace {

using Reports = KPIM::Helper<TransferReports>;

std::shared_ptr<Reports> loadReports(PluginContext& context) {
  auto reports = std::make_shared<Reports>(DIN_TransferReports);
  const KPIM::Context::PluginInterfaceFilter filter(DIN_TransferReports);
  const KPIM::Context::SimplePluginInfoSelector selector;
  reports->loadPlugin(&context, filter, selector, true);
  return reports;
}

std::optional<TransferReport> reportOn(const ItemState& item, const Reports& reports) {
  TransferReport report;
  if (reports.get() == nullptr || !reports->findByAddress(item.url, &report)) return std::nullopt;
  return report;
}

}  // namespace

TransferKnowledge transferKnowledge(PluginContext& context) {
  const std::shared_ptr<Reports> reports = loadReports(context);
  TransferKnowledge knowledge;
  knowledge.reasonOf = [reports](const ItemState& item) -> std::optional<FailureReason> {
    const std::optional<TransferReport> report = reportOn(item, *reports);
    const bool broken = report && (report->phase == TransferPhase::kBroken || report->uid == 0);
    return broken ? reasonFromTransfer(*report, hostOf(item.url)) : std::nullopt;
  };
  knowledge.bytesOf = [reports](const ItemState& item) -> std::optional<std::uint64_t> {
    const std::optional<TransferReport> report = reportOn(item, *reports);
    return report ? std::optional(report->arrived) : std::nullopt;
  };
  return knowledge;
}

}  // namespace playerx
