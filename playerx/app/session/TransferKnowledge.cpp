#include "playerx/app/session/TransferKnowledge.h"

#include <memory>

#include "KPIM/Helper.h"
#include "playerx/app/reasons/HostName.h"
#include "playerx/app/reasons/TransferReason.h"
#include "playerx/framework/PluginContext.h"
#include "playerx/transfers/TransferReports.h"
#include "playerx/transfers/TransferSettings.h"

namespace playerx {

namespace {

using Reports = KPIM::Helper<TransferReports>;

template <class I>
std::shared_ptr<KPIM::Helper<I>> load(PluginContext& context, const char* id) {
  auto helper = std::make_shared<KPIM::Helper<I>>(id);
  const KPIM::Context::PluginInterfaceFilter filter(id);
  const KPIM::Context::SimplePluginInfoSelector selector;
  helper->loadPlugin(&context, filter, selector, true);
  return helper;
}

std::optional<TransferReport> reportOn(const ItemState& item, const Reports& reports) {
  TransferReport report;
  if (reports.get() == nullptr || !reports->findByAddress(item.url, &report)) return std::nullopt;
  return report;
}

}  // namespace

TransferKnowledge transferKnowledge(PluginContext& context) {
  const std::shared_ptr<Reports> reports = load<TransferReports>(context, DIN_TransferReports);
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

void trustForTransfers(PluginContext& context, const std::string& caFile) {
  if (caFile.empty()) return;
  const auto settings = load<TransferSettings>(context, DIN_TransferSettings);
  if (settings->get() != nullptr) settings->get()->setTrustFile(caFile);
}

}  // namespace playerx
