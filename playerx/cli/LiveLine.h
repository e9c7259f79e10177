#pragma once

#include <cstddef>
#include <string>

#include "playerx/app/model/Progress.h"

namespace playerx::cli {

/// The line that shows an item arriving, in at most `columns` columns: percentage, bar, bytes,
/// speed, time left and title, of which a narrow terminal gets the first and what fits of the
/// others. The title is last so that text from right to left cannot carry numbers with it.
std::string liveLine(const model::ItemState& item, const model::Progress& progress,
                     const model::QueueProgress& queue, std::size_t columns);

}  // namespace playerx::cli
