#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "playerx/transfers/Address.h"
#include "playerx/transfers/SessionLog.h"
#include "playerx/transfers/TransferSettings.h"

namespace playerx::transfers {

/// What one session is to fetch and where the file goes: checked, and constant from then on.
struct DownloadRequest {
  Address address;
  /// Addresses of such a film differ from one authorisation to the next.
  bool rightsManaged = false;
  std::vector<unsigned char> rights;  ///< empty for a film without
  FilmOptions options;                ///< with a checksum in lower case
  std::string name;                   ///< below `movies`, clean
  std::filesystem::path movies;
  std::filesystem::path downloads;

  std::filesystem::path path() const { return movies / name; }
};

/// One session, as all threads of the library see it.
struct Session {
  Session(unsigned long long id, DownloadRequest what) : uid(id), request(std::move(what)) {}

  const unsigned long long uid;
  const DownloadRequest request;
  SessionLog log;
  std::atomic<bool> stopped{false};    ///< no further report of it is made, no further work done
  std::atomic<bool> announced{false};  ///< its completion is being, or has been, reported
  std::atomic<bool> confirmed{false};  ///< the queue calls its film complete
};

}  // namespace playerx::transfers
