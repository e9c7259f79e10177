#include "playerx/app/reasons/FailureExplainer.h"

#include <utility>

#include "playerx/app/inputs/ServicesAddress.h"
#include "playerx/app/reasons/FolderCheck.h"
#include "playerx/cli/WakeUp.h"

namespace playerx {

std::optional<FailureReason> reasonFromNotices(const ItemState& item,
                                               const std::vector<Notice>& notices,
                                               const std::string& words) {
  for (const Notice& notice : notices) {
    if (notice.kind == Notice::kSlotDeclined) return slotDeclined();
    if (notice.kind == Notice::kNoSpace) {
      return canHoldFiles(notice.text) ? noSpaceAt(notice.text) : folderUnusable(notice.text);
    }
    if (notice.kind == Notice::kNotAuthorized) return notAuthorized(notice.code, notice.text);
  }
  if (!item.ticket.empty() && !words.empty()) return FailureReason{"services", words};
  if (item.url.empty() && item.ticket.empty()) {
    return FailureReason{"no_address", "This item has no address; remove it and add it again."};
  }
  return std::nullopt;
}

FailureReason reasonOfServices(const std::string& address, const ProbeResult& probe) {
  if (address.empty()) return servicesNotNamed();
  return probe.status > 0 ? servicesNotReady() : servicesUnavailable();
}

FailureReason wordedFor(const ItemState& item, FailureReason reason) {
  const bool isExpired = !item.ticket.empty() && reason.code == accessExpired().code;
  return isExpired ? accessExpired() : std::move(reason);
}

bool isWorthAsking(const ItemState& item, const FailureReason& reason) {
  return reason.code == noSpaceAt("").code && item.ticket.empty() && item.size == 0;
}

FailureReason weigh(const std::optional<FailureReason>& known,
                    const std::optional<FailureReason>& probed) {
  if (!known) return probed.value_or(unexplained());
  return probed && probed->code == badAnswer("").code ? *probed : *known;
}

FailureExplainer::FailureExplainer(WakeUp& wakeUp, TrustedAuthorities authorities,
                                   LibraryReason libraryReason)
    : wakeUp_(wakeUp),
      authorities_(std::move(authorities)),
      libraryReason_(std::move(libraryReason)) {}

FailureExplainer::~FailureExplainer() {
  for (std::jthread& question : questions_) question.request_stop();
}

void FailureExplainer::explain(const ItemState& item, const std::vector<Notice>& notices,
                               const std::string& words) {
  ++open_;
  std::optional<FailureReason> reason = reasonFromNotices(item, notices, words);
  if (!reason) reason = libraryReason_(item);
  if (reason && !isWorthAsking(item, *reason)) return answer(item, *std::move(reason));
  const bool asksServices = item.url.empty();
  const std::string address = asksServices ? servicesAddress() : item.url;
  questions_.emplace_back([=, this](const std::stop_token& stop) {
    const ProbeResult probe = probeServer(address, authorities_, stop);
    if (stop.stop_requested()) return;
    answer(item,
           asksServices ? reasonOfServices(address, probe) : weigh(reason, reasonFromProbe(probe)));
  });
}

std::vector<ExplainedFailure> FailureExplainer::takeAnswers() {
  const std::lock_guard<std::mutex> lock(mutex_);
  open_ -= answers_.size();
  return std::exchange(answers_, {});
}

bool FailureExplainer::isBusy() const { return open_ > 0; }

void FailureExplainer::answer(const ItemState& item, FailureReason reason) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    answers_.push_back({item, wordedFor(item, std::move(reason))});
  }
  wakeUp_.raise();
}

}  // namespace playerx
