#include "tests/unit/transfers/DownloadsFixture.h"

#include <algorithm>

#include "tests/support/WaitFor.h"

namespace playerx::transfers {

Tuning shortTimes() {
  Tuning tuning;
  tuning.retry.firstPause = Milliseconds(1);
  tuning.retry.longestPause = Milliseconds(4);
  tuning.jitter = [] { return 0.5; };
  return tuning;
}

Film filmOf(std::size_t size, unsigned seed) {
  Film film;
  film.content = filmBytes(size, seed);
  return film;
}

DownloadsFixture::DownloadsFixture() { restart(); }

DownloadsFixture::~DownloadsFixture() { downloads_.reset(); }

void DownloadsFixture::restart(const Tuning& tuning) {
  downloads_.reset();
  receiver_.clear();
  downloads_ = std::make_unique<Downloads>(tuning);
  downloads_->recovery();
  downloads_->setCallback(&receiver_);
}

KPB::DownloadInfo DownloadsFixture::info(const std::string& name) const {
  KPB::DownloadInfo info;
  info.setOutputFilename(name);
  info.setMoviesDirectory(movies());
  info.setDownloadDirectory(parts());
  return info;
}

unsigned long long DownloadsFixture::start(const std::string& url, const KPB::DownloadInfo& info) {
  unsigned long long uid = 0;
  EXPECT_EQ(downloads_->startSession(url, info, &uid), 1);
  EXPECT_NE(uid, 0u);
  addresses_[uid] = url;
  return uid;
}

Reported DownloadsFixture::fetch(const std::string& url, const KPB::DownloadInfo& info) {
  const unsigned long long uid = start(url, info);
  EXPECT_TRUE(receiver_.waitForEnd(uid));
  downloads_->confirm(url);
  return receiver_.of(uid);
}

void DownloadsFixture::fetchUntil(int percent, const std::string& url,
                                  const KPB::DownloadInfo& info) {
  const unsigned long long uid = start(url, info);
  EXPECT_TRUE(receiver_.waitForPercent(uid, percent));
  downloads_->stopSession(uid);
}

TransferReport DownloadsFixture::report(unsigned long long uid) const {
  TransferReport report;
  EXPECT_TRUE(downloads_->reports().findByAddress(addresses_.at(uid), &report));
  EXPECT_EQ(report.uid, uid) << "a later session has the same address";
  return report;
}

std::string DownloadsFixture::film(const std::string& name) const {
  const std::filesystem::path path = movies() / name;
  return std::filesystem::exists(path) ? support::readFile(path) : std::string();
}

std::vector<std::string> DownloadsFixture::filesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  std::error_code failure;
  for (const auto& entry : std::filesystem::directory_iterator(folder, failure)) {
    names.push_back(entry.path().filename());
  }
  std::sort(names.begin(), names.end());
  return names;
}

bool DownloadsFixture::partsBecome(const std::vector<std::string>& extensions) const {
  return support::waitFor([&] {
    std::vector<std::string> found;
    for (const std::string& name : filesIn(parts())) {
      found.push_back(std::filesystem::path(name).extension());
    }
    std::sort(found.begin(), found.end());
    return found == extensions;
  });
}

}  // namespace playerx::transfers
