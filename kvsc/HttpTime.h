#pragma once

#include <ctime>
#include <string>
#include <string_view>

namespace kvsc {

/// Reads 'Tue, 05 Mar 2024 10:00:00 GMT' as local time: the zone is ignored. Returns 0 for any
/// other text. Any thread.
std::time_t parseHttpTime(std::string_view text);

/// Writes 'Tue, 5 Mar 2024 10:00:00 GMT': local time under the label GMT, the day without a leading
/// zero. Empty for a time that no calendar year holds. Any thread.
std::string formatHttpTime(std::time_t time);

}  // namespace kvsc
