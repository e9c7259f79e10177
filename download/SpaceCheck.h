#pragma once

#include <QString>
#include <cstdint>
#include <string>

namespace download {

/// Bytes that must be free for a fresh download of `total` bytes: the file twice, and a little for
/// every 7168 bytes of it. All bits set when the number does not fit.
std::uint64_t spaceForFreshDownload(std::uint64_t total);

/// Bytes still to come when `present` of `total` are there. A file whose size cannot be learnt
/// counts as empty.
std::uint64_t missingBytes(std::uint64_t total, std::uint64_t present);

/// Whether a file of `present` bytes holds all of `total`; never for a size that cannot be learnt.
bool isComplete(std::uint64_t total, std::uint64_t present);

/// Whether less than `needed` bytes are known to be free below `folder`.
bool lacksSpace(const QString& folder, std::uint64_t needed);

}  // namespace download
