#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VeskPlayerX/VeskDrm.h"

namespace playerx {

/// The JSON that the online services speak, as described in docs/services-protocol.md. Pure
/// functions of text; a malformed or oversized answer never throws.

/// Longest texts that are taken from an answer, in bytes. Longer ones make it malformed.
constexpr std::size_t kMaxTicketText = 64 * 1024;
constexpr std::size_t kMaxName = 4 * 1024;
constexpr std::size_t kMaxAddress = 8 * 1024;
constexpr std::size_t kMaxRights = 256 * 1024;
/// Most records that one ticket may decode to.
constexpr std::size_t kMaxRecords = 1000;

/// Error codes of our own, beside those of the services.
constexpr std::int32_t kServicesUnreachable = -1;
constexpr std::int32_t kServicesMalformed = -2;

/// Request to decode a ticket file with these bytes.
std::string readTicketRequest(const std::string& fileContent);

using TicketRecords = std::vector<std::unique_ptr<VeskDrmTicketData>>;

/// The records of the answer; empty for a ticket that the services cannot read, nullopt when the
/// answer is malformed.
std::optional<TicketRecords> readTicketAnswer(const std::string& json);

/// Request to authorise the download of `ticket`; `slot` is -1 when no slot was chosen.
std::string authorizeRequest(const std::string& ticket, int slot);

/// Fills every field of `answer`; a malformed text becomes a failure with `kServicesMalformed`.
void authorizeAnswer(const std::string& json, VeskDrmDownloadAuthorization& answer);

/// Report of `bytes` bytes for `ticketId`.
std::string confirmRequest(std::int64_t ticketId, std::uint64_t bytes);

/// Whether the services say that they can serve.
bool readyAnswer(const std::string& json);

}  // namespace playerx
