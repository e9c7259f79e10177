#pragma once

#include <QString>

#include "playerx/app/reasons/Reason.h"

namespace playerx::window {

/// What happened, as one sentence in the user's language; in English where there is no translation.
/// Any thread.
QString reasonSentence(const reasons::Explanation& reason);

}  // namespace playerx::window
