#pragma once

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "KPB/DownloadCallback.h"

namespace playerx::transfers {

/// Everything that was reported of one session, in order.
struct Reported {
  std::vector<std::string> events;  ///< "began", "percent 50", "complete", "broke 404"
  std::vector<std::string> headers;
  std::vector<int> percents;
  std::optional<int> broke;
  bool complete = false;

  bool isOver() const { return complete || broke; }
};

/// Records what the library reports, and fails the test when it reports out of turn: anything but
/// headers before "began" or after the end, a percentage twice in a row or out of range.
class Receiver : public KPB::DownloadCallback {
 public:
  void httpTransferBegan(unsigned long long uid,
                         const std::basic_string<unsigned char>& signature) override;
  void updateProgress(unsigned long long uid, int percent) override;
  void httpTransferComplete(unsigned long long uid) override;
  void httpTransferBroke(unsigned long long uid, int code) override;
  void httpHeaderReceived(unsigned long long uid, const std::string& line) override;

  Reported of(unsigned long long uid) const;

  /// Waits until what was reported of the session is as wanted; false when it never is.
  bool waitUntil(unsigned long long uid, const std::function<bool(const Reported&)>& wanted);
  bool waitForEnd(unsigned long long uid);
  bool waitForPercent(unsigned long long uid, int atLeast);

  /// Forgets everything: the ids of another library begin anew.
  void clear();

  /// Runs within each report from now on, on the library's thread.
  void during(std::function<void(const std::string& event)> action);

 private:
  void note(unsigned long long uid, const std::string& event,
            const std::function<void(Reported&)>& change);

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::map<unsigned long long, Reported> sessions_;
  std::function<void(const std::string&)> action_;
};

}  // namespace playerx::transfers
