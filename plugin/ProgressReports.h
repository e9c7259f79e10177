#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace plugin {

/// The reports of progress that have come in and are not recorded yet: each may have to wait for
/// the online services first.
///
/// What counts is the order in which they came in, whatever the order in which their waits end.
/// Not synchronised: its owner holds one lock over each call.
class ProgressReports {
 public:
  using Number = std::uint64_t;

  /// A report comes in; its number, which `end` has to be given.
  Number begin(unsigned int id, int percent);

  /// Percent of the item's newest report that is not recorded yet; nullopt when all are.
  std::optional<int> newest(unsigned int id) const;

  /// Returns whether the report is to be recorded now: not when a later one of the same item was.
  bool end(Number number);

 private:
  struct Report {
    Number number;
    unsigned int id;
    int percent;
  };

  std::vector<Report> reports_;  ///< in the order in which they came in
  Number last_ = 0;
};

}  // namespace plugin
