#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "KPB/DownloadInfo.h"
#include "playerx/transfers/Downloads.h"
#include "tests/support/TempDir.h"
#include "tests/support/WaitFor.h"
#include "tests/unit/transfers/FilmServer.h"
#include "tests/unit/transfers/Receiver.h"

namespace playerx::transfers {

/// Times short enough to live through in a test; nothing that tests wait for depends on them being
/// this long.
Tuning shortTimes();

/// A download library with folders of its own and a receiver that records.
class DownloadsFixture : public ::testing::Test {
 protected:
  DownloadsFixture();
  ~DownloadsFixture() override;

  KPB::DownloadInfo info(const std::string& name = "film.avi") const;

  /// Starts a session, which must be possible; its id.
  unsigned long long start(const std::string& url, const KPB::DownloadInfo& info);
  unsigned long long start(const std::string& url, const std::string& name = "film.avi") {
    return start(url, info(name));
  }
  /// Starts a session, waits for its end, and confirms its film, if it has one.
  Reported fetch(const std::string& url, const KPB::DownloadInfo& info);
  Reported fetch(const std::string& url, const std::string& name = "film.avi") {
    return fetch(url, info(name));
  }
  /// Starts a session and stops it once so many percent are there.
  void fetchUntil(int percent, const std::string& url, const KPB::DownloadInfo& info);
  void fetchUntil(int percent, const std::string& url, const std::string& name = "film.avi") {
    fetchUntil(percent, url, info(name));
  }

  /// Ends the library in an orderly way and begins anew, as the next run of the player does.
  void restart(const Tuning& tuning = shortTimes());

  /// On the session, which must be the latest of its address.
  TransferReport report(unsigned long long uid) const;

  std::filesystem::path movies() const { return folder_ / "movies"; }
  std::filesystem::path parts() const { return folder_ / "parts"; }
  /// Content of a finished film; empty if absent.
  std::string film(const std::string& name = "film.avi") const;
  /// Names of the files in a folder, sorted.
  static std::vector<std::string> filesIn(const std::filesystem::path& folder);
  /// Waits until the files thread has brought the folder of partials to this list of extensions.
  bool partsBecome(const std::vector<std::string>& extensions) const;

  support::TempDir folder_;
  Receiver receiver_;
  std::unique_ptr<Downloads> downloads_;

 private:
  std::map<unsigned long long, std::string> addresses_;  ///< of the sessions
};

/// A film of so many bytes, with everything that makes it easy to continue.
Film filmOf(std::size_t size, unsigned seed = 1);

}  // namespace playerx::transfers
