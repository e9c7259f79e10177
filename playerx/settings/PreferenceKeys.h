#pragma once

namespace playerx {

/// Keys of preferences that only the player's own modules read.

/// Address of the online services; empty when there are no such services.
inline constexpr char kServicesAddressKey[] = "General/ServicesAddress";

/// PEM file of the certificate authorities to trust; empty for the system's.
inline constexpr char kCaFileKey[] = "General/CaFile";

/// Bytes per second that all films together may take; empty for no limit.
inline constexpr char kRateLimitKey[] = "General/RateLimit";

/// Proxy of the window: empty for that of the environment, "none", or an address.
inline constexpr char kProxyKey[] = "General/Proxy";

/// Command that plays a film, the location appended; empty for "mpv".
inline constexpr char kPlayerKey[] = "General/Player";

}  // namespace playerx
