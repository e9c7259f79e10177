#include "playerx/app/reasons/ProbeReason.h"

#include "playerx/app/reasons/TransferReason.h"

namespace playerx {

std::optional<FailureReason> reasonFromProbe(const ProbeResult& probe) {
  TransferReport report;
  report.failure = failureOf(probe.end);
  report.detail = probe.detail;
  // One question that broke off says nothing of a line that breaks again and again.
  if (report.failure == TransferFailure::kDropped) return badAnswer(probe.host);
  if (report.failure != TransferFailure::kNone) return reasonFromTransfer(report, probe.host);
  if (probe.status >= 400) return reasonFromStatus(probe.status, probe.host);
  if (probe.length == 0) {
    return FailureReason{"empty_file",
                         "The film at " + probe.host + " is empty (0 bytes); ask the provider."};
  }
  if (probe.length < 0) {
    return FailureReason{"no_length", probe.host +
                                          " does not say how long the film is, so it cannot be "
                                          "downloaded; ask the provider for a direct address."};
  }
  return std::nullopt;
}

}  // namespace playerx
