#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace support {

/// A folder of its own below the system's temporary folder, removed with everything in it.
/// Owner: the test. Threads: any, it never changes. Failure: std::runtime_error from the
/// constructor.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

  /// Writes a file below the folder, making the folders it lies in; returns its full path.
  std::filesystem::path write(std::string_view name, std::string_view content) const;

 private:
  std::filesystem::path path_;
};

/// The whole content of a file; std::runtime_error when it cannot be read.
std::string readFile(const std::filesystem::path& path);

/// Replaces the content of a file; std::runtime_error when it cannot be written.
void writeFile(const std::filesystem::path& path, std::string_view content);

/// The names in a folder that begin with a full stop.
std::vector<std::string> hiddenFilesIn(const std::filesystem::path& folder);

}  // namespace support
