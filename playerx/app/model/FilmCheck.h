#pragma once

#include <filesystem>
#include <string>

#include "playerx/app/model/FolderNames.h"
#include "playerx/app/model/ItemState.h"

namespace playerx::model {

/// What is odd about a film that the queue calls complete, in one sentence: it is shorter or longer
/// than its server had announced, lies in `mediaFolder` and not where the queue has it, or in
/// neither place. Empty when nothing is. Looks at the disk. Any thread.
std::string findOddity(const ItemState& film, const std::filesystem::path& mediaFolder);

/// The same for one of many films, which share `folders`.
std::string findOddity(const ItemState& film, const std::filesystem::path& mediaFolder,
                       FolderNames& folders);

/// Free bytes that the download manager asks for, where films go and where they arrive, before it
/// fetches a film of `size` bytes. All bits set when the number does not fit. Pure.
std::uint64_t spaceNeededFor(std::uint64_t size);

/// Whether a text (UTF-8) can be the name of a film in its folder: one plain name without control
/// characters. Pure.
bool isFilmName(const std::string& name);

}  // namespace playerx::model
