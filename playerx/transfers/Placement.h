#pragma once

#include <atomic>
#include <filesystem>
#include <string>

#include "playerx/transfers/Part.h"
#include "playerx/transfers/Session.h"
#include "playerx/transfers/TransferFailure.h"

namespace playerx::transfers {

/// How the placing of a film ended.
struct Placed {
  enum class Kind {
    kDone,       ///< the film is at `film`
    kCancelled,  ///< nothing has changed
    kMustWait,   ///< there is slow work to do, which was not allowed
    kFailed,     ///< `failure`, `detail`
  };
  Kind kind = Kind::kFailed;
  std::filesystem::path film;
  TransferFailure failure = TransferFailure::kNone;
  std::string detail;
};

/// Whether slow work may be done: reading the film for its checksum, copying it elsewhere.
enum class Waiting { kAllowed, kForbidden };

/// Moves a whole partial to the place that `request` names, or to a variant of the name when that
/// is taken, and puts the rights data beside it. The film carries its mark before it moves:
/// whenever the process dies, it is found again. A film with another checksum than `sha256`
/// (empty: any) is dropped, and fails with `kChecksum`. `isCancelled` may be set by another thread.
Placed placePart(Part& part, const DownloadRequest& request, const std::string& sha256,
                 const std::atomic<bool>& isCancelled, Waiting waiting);

/// Does the same with a film that an earlier session has placed at `film`.
Placed placeFilmAgain(const std::filesystem::path& film, const DownloadRequest& request,
                      const std::atomic<bool>& isCancelled, Waiting waiting);

/// Moves a film that was placed at `film` back to `folder` as a partial, or, where that is on
/// another file system, aside under a numbered name, when it carries its mark: `openPart` finds it
/// there. Its rights data is deleted: the next authorisation brings it anew. Returns whether it
/// did.
bool takeBack(const std::filesystem::path& film, const std::filesystem::path& folder);

/// The same for the film of an address that lies in `movies` under the name of its address.
bool takeBackFilmOf(const Address& address, const std::filesystem::path& movies,
                    const std::filesystem::path& folder);

}  // namespace playerx::transfers
