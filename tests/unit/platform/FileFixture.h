#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "kvpm/File.h"
#include "kvpm/StringTools.h"
#include "playerx/platform/HiddenFile.h"
#include "tests/support/TempDir.h"

namespace platform_test {

/// Shorthands for the tests of `kvpm::File`.

inline std::wstring wide(const std::filesystem::path& path) {
  return kvpm::StringTools::stringToWString(path.string());
}

inline std::int64_t write(kvpm::File& file, const std::string& text) {
  return file.write(text.data(), text.size());
}

inline std::string read(kvpm::File& file, std::uint64_t length) {
  std::string text(length, '\0');
  const std::int64_t got = file.read(text.data(), length);
  EXPECT_GE(got, 0);
  text.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
  return text;
}

/// Replaces the content of a file; returns the first error number other than 0.
inline int replace(const std::filesystem::path& path, const std::string& content) {
  kvpm::File file;
  if (const int error = file.open(wide(path), kvpm::FileOpenWrite); error != 0) return error;
  write(file, content);
  return file.close();
}

/// The names of the hidden versions beside a file.
inline std::vector<std::filesystem::path> hiddenBeside(const std::filesystem::path& path) {
  std::vector<std::filesystem::path> names;
  playerx::forEachHiddenFile(path, [&](const auto& name) { names.push_back(name); });
  return names;
}

inline std::size_t filesIn(const support::TempDir& folder) {
  const std::filesystem::directory_iterator all(folder.path());
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

/// Files of this process cannot grow beyond a size while this lives, as on a full disk.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    before_ = std::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &limit_);
    const rlimit smaller = {bytes, limit_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &smaller);
  }
  ~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &limit_);
    std::signal(SIGXFSZ, before_);
  }

 private:
  rlimit limit_{};
  void (*before_)(int) = nullptr;
};

}  // namespace platform_test
