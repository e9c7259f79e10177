#pragma once

#include <optional>
#include <string>

namespace playerx {

struct Options;

/// The user's home folder: what HOME says, or else what the account says. None when neither names a
/// folder of the user's own. Either may be null.
std::optional<std::string> homeFolder(const char* variable, const char* ofAccount);

/// Sees to it that HOME names the home folder, for whatever looks there later. Returns whether
/// there is one. Call it before any thread.
bool settleHome();

/// Without a home folder: one sentence on the folders that the options do not name; empty when they
/// name all. `dataHome` is XDG_DATA_HOME, which may be null.
std::string homelessness(const Options& options, const char* dataHome);

}  // namespace playerx
