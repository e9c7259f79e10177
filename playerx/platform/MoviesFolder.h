#pragma once

#include <string>

namespace playerx {

/// Sets what `kvpm::PathTools::getVeskMoviesFolder` answers from now on; separators at the end are
/// dropped. An empty text brings `defaultMoviesFolder` back. May be called from any thread.
void setMoviesFolder(const std::wstring& folder);

/// "Vesk" in the user's folder for videos; absolute, without a separator at its end.
std::wstring defaultMoviesFolder();

}  // namespace playerx
