#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "playerx/app/reasons/ServerProbe.h"

namespace VeskPlayerX {
class ZPSServicesInterface;
}

namespace playerx::inputs {

/// One thing to say about a ticket: a film that it names, or why it yields nothing. UTF-8.
struct TicketFinding {
  bool isFilm = false;
  int line = 0;  ///< in the ticket, from 1 on; 0 for the ticket as a whole
  std::string title{};
  std::string provider{};
  std::string url{};                    ///< empty for a protected film
  std::optional<std::uint64_t> size{};  ///< bytes; nullopt when not known
  std::optional<bool> fits{};           ///< whether there is room for it; nullopt when not known
  std::string note{};                   ///< one sentence, may be empty for a film
  std::optional<reasons::Explanation> reason{};  ///< the note is its sentence; may be nullopt
};

/// What a ticket would download. A protected one is read by `services`, null without any; sizes
/// come from the servers of the films, which `probe` asks, of the first 50 films only. The ticket
/// and the queue stay as they are. Waits for the network; on the host's thread.
std::vector<TicketFinding> examineTicket(const std::string& ticket,
                                         VeskPlayerX::ZPSServicesInterface* services,
                                         const reasons::Probe& probe);

}  // namespace playerx::inputs
