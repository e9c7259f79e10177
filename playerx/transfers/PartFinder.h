#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "playerx/transfers/Part.h"
#include "playerx/transfers/Session.h"
#include "playerx/transfers/TransferFailure.h"

namespace playerx::transfers {

/// What a session begins with.
struct Opened {
  enum class Kind {
    kArriving,  ///< bytes are missing, or have to be proven
    kArrived,   ///< every byte is there and was proven; the file has to be placed
    kFinished,  ///< an earlier session has placed the film at `film`, unnoticed
  };
  Kind kind = Kind::kArriving;
  std::unique_ptr<Part> part;  ///< null: `failure` says why
  std::filesystem::path film;
  TransferFailure failure = TransferFailure::kNone;
  std::string detail;
};

/// Finds what earlier sessions have left of the wished film, or begins a new partial; claims it.
///
/// A partial is known by the address it came from, never by name or size; a rights-managed film by
/// its place alone, since every authorisation gives it another address. Of a film that was finished
/// without anybody taking note, the name must fit too: the one it was placed under, or a variant
/// that is chosen when that is taken. Finished films of other addresses that have been taken note
/// of are forgotten here. Runs on the files thread.
Opened openPart(const Wish& wish);

/// Marks the completion recorded in these files as taken note of.
void noteCompletion(const PartPaths& paths);

/// Forgets all completions in the folder that have been taken note of.
void forgetNoted(const std::filesystem::path& folder);

}  // namespace playerx::transfers
