#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <string>

#include "KPB/DownloadInterface.h"
#include "playerx/platform/GuardMutex.h"
#include "playerx/settings/TrustedAuthorities.h"
#include "playerx/transfers/Engine.h"
#include "playerx/transfers/FilmRecovery.h"
#include "playerx/transfers/ReportBook.h"
#include "playerx/transfers/ReportDelivery.h"
#include "playerx/transfers/TransferSettings.h"
#include "playerx/transfers/Tuning.h"

namespace playerx::transfers {

/// The download library as a whole: checks requests, hands them to the engine, answers questions.
/// Three threads are its own, one for the network, one for files, one for reports.
///
/// Threads: as the interfaces say. The destructor ends all sessions, keeps what has arrived, and
/// returns when no thread of the library runs; it must not be called within a report.
class Downloads : public KPB::DownloadInterface, public TransferSettings, public FilmRecovery {
 public:
  explicit Downloads(const Tuning& tuning = {});
  ~Downloads() override;

  void setCallback(KPB::DownloadCallback* callback) override;
  int startSession(const std::string& urlUtf8, const KPB::DownloadInfo& info,
                   unsigned long long* uid) override;
  void stopSession(unsigned long long uid) override;

  void setTrustFile(const std::string& pathUtf8) override;

  void retryNow() override { engine_.retryNow(); }
  void setRateLimit(std::uint64_t bytesPerSecond) override;
  bool setFilmOptions(const std::string& urlUtf8, const FilmOptions& options) override;

  bool takeBack(const std::string& filmUtf8, const std::string& downloadFolderUtf8) override;
  bool takeBackFilmOf(const std::string& urlUtf8, const std::string& moviesFolderUtf8,
                      const std::string& downloadFolderUtf8) override;
  void confirm(const std::string& urlUtf8) override;

  TransferReports& reports() { return book_; }

  /// From the first call on, a film keeps its mark until it is confirmed.
  FilmRecovery& recovery();

 private:
  int refuse(DownloadRequest request, TransferFailure failure);
  FilmOptions optionsOf(const Address& address);

  const TrustedAuthorities environmentTrust_;
  std::atomic<unsigned long long> lastUid_{0};
  GuardMutex mutex_;
  /// By the form in which addresses are remembered.
  std::map<std::string, FilmOptions> options_ KVPM_GUARDED_BY(mutex_);
  ReportBook book_;
  ReportDelivery delivery_;
  Engine engine_;
};

}  // namespace playerx::transfers
