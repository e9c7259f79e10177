// A process of its own with the download library in it, so that tests can kill it:
//
//     fetch_program PARTS MOVIES {URL NAME}...
//
// fetches one after the other, prints a line for everything that is reported, confirms and releases
// each once it is over, and ends with 1 when one broke. With "--keep" in front it does neither and
// never ends by itself.

#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <string>
#include <vector>

#include "KPB/DownloadCallback.h"
#include "KPB/DownloadInfo.h"
#include "playerx/transfers/Downloads.h"

namespace {

class Printer : public KPB::DownloadCallback {
 public:
  void httpTransferBegan(unsigned long long, const std::basic_string<unsigned char>&) override {
    print("began");
  }
  void updateProgress(unsigned long long, int percent) override {
    print("percent " + std::to_string(percent));
  }
  void httpTransferComplete(unsigned long long) override { end("complete", true); }
  void httpTransferBroke(unsigned long long, int code) override {
    end("broke " + std::to_string(code), false);
  }
  void httpHeaderReceived(unsigned long long, const std::string&) override {}

  bool waitForEnd() {
    std::unique_lock lock(mutex_);
    over_.wait(lock, [this] { return isOver_; });
    isOver_ = false;
    return isComplete_;
  }

 private:
  static void print(const std::string& line) {
    std::puts(line.c_str());
    std::fflush(stdout);
  }
  void end(const std::string& line, bool complete) {
    print(line);
    const std::lock_guard lock(mutex_);
    isOver_ = true;
    isComplete_ = complete;
    over_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable over_;
  bool isOver_ = false;
  bool isComplete_ = false;
};

}  // namespace

int main(int count, char** values) {
  std::vector<std::string> arguments(values + 1, values + count);
  const bool keeps = !arguments.empty() && arguments[0] == "--keep";
  if (keeps) arguments.erase(arguments.begin());
  if (arguments.size() < 4) return 2;
  Printer printer;
  playerx::transfers::Downloads downloads;
  downloads.setCallback(&printer);
  KPB::DownloadInfo info;
  info.setDownloadDirectory(arguments[0]);
  info.setMoviesDirectory(arguments[1]);
  bool isComplete = true;
  for (std::size_t next = 2; next + 1 < arguments.size(); next += 2) {
    info.setOutputFilename(arguments[next + 1]);
    unsigned long long uid = 0;
    if (downloads.startSession(arguments[next], info, &uid) != 1) return 1;
    isComplete = printer.waitForEnd() && isComplete;
    if (keeps) continue;
    downloads.recovery().confirm(arguments[next]);
    downloads.stopSession(uid);
  }
  if (keeps) printer.waitForEnd();
  return isComplete ? 0 : 1;
}
