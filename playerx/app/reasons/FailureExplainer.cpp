#include "playerx/app/reasons/FailureExplainer.h"

#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "playerx/app/model/FilmCheck.h"
#include "playerx/app/model/TextFormat.h"
#include "playerx/app/reasons/TransferReason.h"
#include "playerx/platform/NativePath.h"
#include "playerx/settings/ServicesAddress.h"

namespace playerx::reasons {

using model::ItemState;
using model::Notice;

namespace {

std::string folderWithoutSpace(const std::vector<Notice>& notices) {
  const auto found = std::find_if(notices.begin(), notices.end(), [](const Notice& notice) {
    return notice.kind == Notice::kNoSpace;
  });
  return found == notices.end() ? "" : found->text;
}

/// Whether files can be kept in this folder, which may still have to be made: the next folder above
/// that exists can be written and lies on a disk, not in a file system of the kernel's own.
bool canHoldFiles(const std::string& folder) {
  const std::filesystem::path existing = nearestExisting(folder);
  std::error_code error;
  if (!std::filesystem::is_directory(existing, error)) return false;
  struct statvfs disk {};
  if (statvfs(existing.c_str(), &disk) != 0) return true;
  return disk.f_blocks > 0 && access(existing.c_str(), W_OK) == 0;
}

Explanation explainRefusal(const Notice& notice) {
  // Errors below 0 are the player's own: the services refused nothing.
  if (notice.code < 0 && !notice.text.empty()) {
    return explain(Reason::kNoAuthorization, {.words = notice.text});
  }
  const std::string error = "error " + std::to_string(notice.code);
  return explain(Reason::kNotAuthorized,
                 {.words = notice.text.empty() ? error : error + ": " + notice.text});
}

std::optional<Explanation> explainNotice(const Notice& notice, std::uint64_t size) {
  switch (notice.kind) {
    case Notice::kSlotDeclined:
      return explain(Reason::kSlotDeclined);
    case Notice::kNoSpace:
      return canHoldFiles(notice.text) ? explainSpace(notice.text, size)
                                       : explain(Reason::kFolderUnusable, {.place = notice.text});
    case Notice::kNotAuthorized:
      return explainRefusal(notice);
    default:
      return std::nullopt;
  }
}

/// Nullopt unless the last transfer is the one that failed; one refused at its start has no uid.
std::optional<Explanation> explainLastTransfer(const std::optional<TransferReport>& report,
                                               const std::string& address) {
  const bool isBroken = report && (report->phase == TransferPhase::kBroken || report->uid == 0);
  return isBroken ? explainTransfer(*report, address) : std::nullopt;
}

/// Whether the question of an item is one for the online services: a protected film that nothing is
/// known of was not authorised, even when it has an address from an earlier run.
bool isForServices(const ItemState& item) { return !item.ticket.empty(); }

}  // namespace

std::optional<Explanation> explainNotices(const ItemState& item, const std::vector<Notice>& notices,
                                          const std::string& words) {
  for (const Notice& notice : notices) {
    if (auto explanation = explainNotice(notice, item.size)) return explanation;
  }
  if (!item.ticket.empty() && !words.empty()) {
    return explain(Reason::kServicesSaid, {.words = words});
  }
  if (item.url.empty() && item.ticket.empty()) return explain(Reason::kItemWithoutAddress);
  return std::nullopt;
}

Explanation explainSpace(const std::string& folder, std::uint64_t size) {
  std::error_code error;
  const std::filesystem::space_info disk = std::filesystem::space(nearestExisting(folder), error);
  const auto [needed, free] = model::formatApart(model::spaceNeededFor(size), disk.available);
  std::string numbers;
  if (size > 0) numbers = needed + " needed";
  if (!error) numbers += (numbers.empty() ? "" : ", ") + free + " free";
  return explain(Reason::kTooLittleSpace, {.place = folder, .words = numbers});
}

Reason reasonOfServices(const ProbeResult& probe) {
  if (probe.address.empty()) return Reason::kServicesNotNamed;
  return probe.status > 0 ? Reason::kServicesNotReady : Reason::kServicesUnreachable;
}

bool isDoubtful(const ItemState& item, const Explanation& known) {
  return known.reason == Reason::kTooLittleSpace && item.ticket.empty() && item.size == 0;
}

Explanation chooseExplanation(const std::optional<Explanation>& known,
                              const std::optional<Explanation>& probed) {
  if (!known) return probed.value_or(explain(Reason::kUnexplained));
  const bool isNonsense = probed && probed->reason == reasonOf(TransferFailure::kBadAnswer);
  return isNonsense ? *probed : *known;
}

Explanation adaptedTo(const ItemState& item, Explanation explanation) {
  const bool isExpired = !item.ticket.empty() && explanation.reason == reasonOfStatus(401);
  return isExpired ? explain(Reason::kAccessExpired) : std::move(explanation);
}

FailureExplainer::FailureExplainer(std::function<void()> wake, FindTransfer findTransfer,
                                   Probe probe)
    : wake_(std::move(wake)),
      findTransfer_(std::move(findTransfer)),
      probe_(std::move(probe)),
      asking_([this](const std::stop_token& stop) { answerQuestions(stop); }) {}

FailureExplainer::~FailureExplainer() {
  asking_.request_stop();
  {
    const GuardLock lock(mutex_);
    ends_ = true;
  }
  asked_.notifyAll();
}

void FailureExplainer::explain(const ItemState& item, const std::vector<Notice>& notices,
                               const std::string& words) {
  ++open_;
  std::optional<Explanation> known = explainNotices(item, notices, words);
  if (!known) known = explainLastTransfer(findTransfer_(item.url), item.url);
  if (known && !isDoubtful(item, *known)) return answer(item, *std::move(known));
  ask({item, isForServices(item) ? servicesAddress() : item.url, std::move(known),
       folderWithoutSpace(notices)});
}

std::vector<ExplainedFailure> FailureExplainer::takeAnswers() {
  const GuardLock lock(mutex_);
  open_ -= answers_.size();
  return std::exchange(answers_, {});
}

void FailureExplainer::ask(Question question) {
  {
    const GuardLock lock(mutex_);
    questions_.push_back(std::move(question));
  }
  asked_.notifyOne();
}

void FailureExplainer::answer(const ItemState& item, Explanation explanation) {
  {
    const GuardLock lock(mutex_);
    answers_.push_back({item, adaptedTo(item, std::move(explanation))});
  }
  wake_();
}

/// Waits for the next question; nullopt when the explainer ends.
std::optional<FailureExplainer::Question> FailureExplainer::takeQuestion() {
  const GuardLock lock(mutex_);
  while (!ends_ && questions_.empty()) asked_.wait(mutex_);
  if (ends_) return std::nullopt;
  Question question = std::move(questions_.front());
  questions_.pop_front();
  return question;
}

Explanation FailureExplainer::answerTo(const Question& question, const ProbeResult& probe) {
  if (isForServices(question.item)) {
    return reasons::explain(reasonOfServices(probe), {.host = hostOf(probe.address)});
  }
  Explanation chosen = chooseExplanation(question.known, explainProbe(probe));
  // Only now the size that there is no room for is known.
  const bool isSpace = chosen.reason == Reason::kTooLittleSpace && probe.length > 0;
  return isSpace ? explainSpace(question.crowded, static_cast<std::uint64_t>(probe.length))
                 : chosen;
}

void FailureExplainer::answerQuestions(const std::stop_token& stop) {
  while (const std::optional<Question> question = takeQuestion()) {
    const ProbeResult probe = probe_(question->server, stop);
    if (stop.stop_requested()) return;
    answer(question->item, answerTo(*question, probe));
  }
}

}  // namespace playerx::reasons
