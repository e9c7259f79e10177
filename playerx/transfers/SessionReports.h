#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "playerx/transfers/PercentReporter.h"
#include "playerx/transfers/ReportDelivery.h"
#include "playerx/transfers/Session.h"

namespace playerx::transfers {

/// What becomes known of one session, told to its log and to the receiver of the reports alike.
///
/// Belongs to the session's transfer and its thread; `delivery` outlives it.
class SessionReports {
 public:
  SessionReports(std::shared_ptr<Session> session, ReportDelivery& delivery);

  void header(std::string_view line);

  /// The partial holds this many bytes before anything is asked for.
  void found(std::uint64_t bytes);

  /// That many bytes are there; `total` is nullopt when not known. The first call reports the
  /// beginning too.
  void arrived(std::uint64_t bytes, std::optional<std::uint64_t> total);

  /// All `size` bytes were there already.
  void whole(std::uint64_t size);

  void complete(const std::filesystem::path& film);
  void broke(TransferFailure failure, const std::string& detail);

 private:
  void began();

  const std::shared_ptr<Session> session_;
  ReportDelivery& delivery_;
  PercentReporter percent_{std::nullopt};
  bool hasBegun_ = false;
};

}  // namespace playerx::transfers
