#pragma once

#include <ctime>
#include <string_view>

namespace kvsc {

/// Reads 'Tue, 05 Mar 2024 10:00:00 GMT'. The zone is not looked at: the text counts as local time.
/// Returns 0 for what is no such text. Any thread.
std::time_t parseHttpTime(std::string_view text);

}  // namespace kvsc
