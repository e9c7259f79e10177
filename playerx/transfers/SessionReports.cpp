#include "playerx/transfers/SessionReports.h"

#include <utility>

namespace playerx::transfers {

SessionReports::SessionReports(std::shared_ptr<Session> session, ReportDelivery& delivery)
    : session_(std::move(session)), delivery_(delivery) {}

void SessionReports::header(std::string_view line) {
  delivery_.header(session_, std::string(line));
}

// The receiver assumes 0 %, so that is not reported; what an earlier session left is.
void SessionReports::found(std::uint64_t bytes) {
  session_->log.arrived(bytes, std::nullopt);
  if (bytes == 0) percent_ = PercentReporter(0);
}

void SessionReports::began() {
  if (!std::exchange(hasBegun_, true)) delivery_.began(session_);
}

void SessionReports::arrived(std::uint64_t bytes, std::optional<std::uint64_t> total) {
  session_->log.arrived(bytes, total);
  began();
  if (const auto percent = percent_.next(bytes, total)) delivery_.percent(session_, *percent);
}

void SessionReports::whole(std::uint64_t size) {
  session_->log.arrived(size, size);
  began();
  delivery_.percent(session_, 100);
}

void SessionReports::complete(const std::filesystem::path& film) {
  session_->log.completed(film);
  delivery_.complete(session_);
}

void SessionReports::broke(TransferFailure failure, const std::string& detail) {
  session_->log.broke(failure, detail);
  delivery_.broke(session_, static_cast<int>(failure));
}

}  // namespace playerx::transfers
