#include "playerx/transfers/ReportBook.h"

#include <algorithm>

#include "playerx/transfers/Address.h"

namespace playerx::transfers {
namespace {

constexpr std::size_t kMostSessions = 500;

TransferReport reportOn(const Session& session) {
  TransferReport report = session.log.report();
  report.uid = session.uid;
  report.address = session.request.address.remembered;
  report.requestedPath = session.request.path();
  return report;
}

bool isOver(const Session& session) { return reportOn(session).phase >= TransferPhase::kComplete; }

}  // namespace

void ReportBook::add(const std::shared_ptr<Session>& session) {
  const GuardLock lock(mutex_);
  sessions_.push_back(session);
  if (sessions_.size() <= kMostSessions) return;
  const auto oldest = std::find_if(sessions_.begin(), sessions_.end(),
                                   [](const auto& one) { return isOver(*one); });
  if (oldest != sessions_.end()) sessions_.erase(oldest);
}

std::shared_ptr<Session> ReportBook::find(unsigned long long uid) const {
  const GuardLock lock(mutex_);
  const auto found = std::find_if(sessions_.rbegin(), sessions_.rend(),
                                  [&](const auto& one) { return one->uid == uid; });
  return uid == 0 || found == sessions_.rend() ? nullptr : *found;
}

bool ReportBook::findByAddress(const std::string& urlUtf8, TransferReport* report) const {
  const auto address = parseAddress(urlUtf8);
  const std::string wanted = address ? address->remembered : urlUtf8;
  return findLatest([&](const TransferReport& one) { return one.address == wanted; }, report);
}

bool ReportBook::findByPath(const std::string& pathUtf8, TransferReport* report) const {
  const auto fits = [&](const TransferReport& one) {
    return one.requestedPath == pathUtf8 || one.finalPath == pathUtf8;
  };
  return findLatest(fits, report);
}

bool ReportBook::findLatest(const std::function<bool(const TransferReport&)>& fits,
                            TransferReport* report) const {
  const GuardLock lock(mutex_);
  for (auto one = sessions_.rbegin(); one != sessions_.rend(); ++one) {
    TransferReport candidate = reportOn(**one);
    if (!fits(candidate)) continue;
    *report = std::move(candidate);
    return true;
  }
  return false;
}

}  // namespace playerx::transfers
