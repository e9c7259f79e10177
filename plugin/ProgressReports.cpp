#include "plugin/ProgressReports.h"

#include <algorithm>

namespace plugin {

ProgressReports::Number ProgressReports::begin(unsigned int id, int percent) {
  reports_.push_back({++last_, id, percent});
  return last_;
}

std::optional<int> ProgressReports::newest(unsigned int id) const {
  const auto found = std::find_if(reports_.rbegin(), reports_.rend(),
                                  [id](const Report& report) { return report.id == id; });
  return found == reports_.rend() ? std::nullopt : std::make_optional(found->percent);
}

bool ProgressReports::end(Number number) {
  const auto found = std::find_if(reports_.begin(), reports_.end(), [number](const Report& report) {
    return report.number == number;
  });
  if (found == reports_.end()) return false;
  // Those that it has overtaken are no longer to be recorded.
  std::erase_if(reports_, [number, id = found->id](const Report& report) {
    return report.id == id && report.number <= number;
  });
  return true;
}

}  // namespace plugin
