#pragma once

#include <string>
#include <vector>

namespace playerx::cli {

/// The candidate that differs from `word` by the fewest typing errors (a letter too many, too few,
/// wrong, or two that changed places), or that other download programs call `word`; empty when each
/// differs by more than a third of the word.
std::string nearestTo(const std::string& word, const std::vector<std::string>& candidates);

}  // namespace playerx::cli
