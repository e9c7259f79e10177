#pragma once

#include <chrono>
#include <string>

#include "playerx/transfers/TransferSettings.h"

namespace playerx::inputs {

/// Bounds of what a person may ask of a transfer.
constexpr unsigned kMostTries = 1'000'000'000;  ///< as good as no limit
constexpr std::chrono::seconds kLongestTimeout{24 * 3600};

/// What is wrong with one option of how films are fetched, as one sentence; empty when nothing is.
/// Sentences do not repeat what may be secret. Files are looked for on the disk; their paths are
/// absolute.
std::string faultOfHeader(const std::string& line);
std::string faultOfReferer(const std::string& referer);
std::string faultOfNetrcFile(const std::string& path);
std::string faultOfCookieFile(const std::string& path);
std::string faultOfSum(const std::string& sha256);

/// The same for the name that a film is to have.
std::string faultOfName(const std::string& name);

/// The same for what only one film can have: a name, and a checksum. `isOneAddress` says whether
/// they are given for one address alone.
std::string faultOfSharing(bool isOneAddress, const std::string& name, const FilmOptions& options);

/// The same for user name and password, which come from an address.
std::string faultOfUser(const FilmOptions& options);

/// The first fault of all options that are set, whichever way they came.
std::string faultOf(const FilmOptions& options);

}  // namespace playerx::inputs
