#pragma once

#include <QString>
#include <string>

#include "playerx/app/reasons/Reason.h"

namespace playerx::window {

/// Why a film failed or an input was refused, in the language of the user: a sentence without the
/// command line's advice. Any thread.
QString reasonSentence(const reasons::Explanation& reason);

/// A sentence that the queue says in English, in the language of the user; one that is not known
/// stays as it is. Any thread.
QString queueSentence(const std::string& english);

}  // namespace playerx::window
