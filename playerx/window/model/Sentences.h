#pragma once

#include <QString>
#include <string>

#include "playerx/app/reasons/Reason.h"

namespace playerx::window {

/// Why a film failed or an input was refused, with what can be done, in the language of the user.
/// Any thread.
QString reasonSentence(const reasons::Explanation& reason);

/// Whether a reason's advice is for the window too: it names neither options nor commands. Pure.
bool isAdviceForWindow(const std::string& advice);

/// A sentence that the queue says in English, in the language of the user; one that is not known
/// stays as it is. Any thread.
QString queueSentence(const std::string& english);

}  // namespace playerx::window
