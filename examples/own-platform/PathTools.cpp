// Paths on std::filesystem.

#include "kvpm/PathTools.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QStandardPaths>
#include <filesystem>

#include "kvpm/StringTools.h"

namespace kvpm {
namespace {

namespace fs = std::filesystem;

std::string native(const std::wstring& path) { return StringTools::wStringToString(path); }

/// The path of an address; a local path as it is.
std::wstring pathOf(const std::wstring& text) {
  const std::size_t scheme = text.find(L"://");
  if (scheme == std::wstring::npos || text.starts_with(L'/')) return text;
  const std::wstring rest = text.substr(scheme + 3, text.find_first_of(L"?#", scheme) - scheme - 3);
  const std::size_t slash = rest.find(L'/');
  return slash == std::wstring::npos ? std::wstring() : rest.substr(slash);
}

fs::path nearestExisting(fs::path folder) {
  std::error_code failure;
  while (!folder.empty() && folder.has_relative_path() && !fs::exists(folder, failure)) {
    folder = folder.parent_path();
  }
  return folder;
}

}  // namespace

std::wstring PathTools::getWPathSeparator() { return L"/"; }

std::wstring PathTools::getFileName(const std::wstring& path) {
  const std::wstring text = pathOf(path);
  return text.substr(text.rfind(L'/') + 1);  // the whole text when there is no separator
}

std::wstring PathTools::getExtension(const std::wstring& path) {
  const std::wstring name = getFileName(path);
  const std::size_t dot = name.rfind(L'.');
  return dot == std::wstring::npos ? std::wstring() : name.substr(dot);
}

std::wstring PathTools::getDirectory(const std::wstring& path) {
  const std::size_t slash = path.rfind(L'/');
  if (slash == std::wstring::npos) return {};
  return slash == 0 ? L"/" : path.substr(0, slash);
}

bool PathTools::fileExists(const std::wstring& path) {
  std::error_code failure;
  return fs::exists(native(path), failure);
}

std::uint64_t PathTools::getFileSize(const std::wstring& path) {
  if (!fileExists(path)) return 0;
  std::error_code failure;
  const std::uintmax_t size = fs::file_size(native(path), failure);
  return failure ? kUnknownSize : size;
}

std::uint64_t PathTools::getFileVersion(const std::wstring& path) {
  struct stat status {};
  if (::stat(native(path).c_str(), &status) != 0) return 0;
  constexpr std::uint64_t kPrime = 1099511628211U;
  std::uint64_t version = 1;
  for (const long part : {static_cast<long>(status.st_ino), status.st_size, status.st_ctim.tv_sec,
                          status.st_ctim.tv_nsec}) {
    version = version * kPrime + static_cast<std::uint64_t>(part);
  }
  return version;
}

bool PathTools::moveFile(const std::wstring& from, const std::wstring& to) {
  // A link never replaces anything, as a rename would; it fails across file systems.
  std::error_code failure;
  if (::link(native(from).c_str(), native(to).c_str()) != 0 &&
      !fs::copy_file(native(from), native(to), failure)) {
    return false;
  }
  return deleteFile(from);
}

bool PathTools::deleteFile(const std::wstring& path) { return ::unlink(native(path).c_str()) == 0; }

std::wstring PathTools::getVeskMoviesFolder() {
  return QStandardPaths::writableLocation(QStandardPaths::MoviesLocation).toStdWString() + L"/Vesk";
}

std::uint64_t PathTools::getSpaceAvailable(const std::wstring& directory) {
  std::error_code failure;
  const fs::space_info space = fs::space(nearestExisting(native(directory)), failure);
  return failure ? kUnknownSize : space.available;
}

}  // namespace kvpm
