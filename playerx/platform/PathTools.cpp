#include "kvpm/PathTools.h"

#include <sys/stat.h>
#include <xxhash.h>

#include <QDir>
#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "playerx/platform/FileMove.h"
#include "playerx/platform/FileSync.h"
#include "playerx/platform/NativePath.h"
#include "playerx/platform/Rename.h"
#include "playerx/platform/VersionRecord.h"

namespace kvpm {
namespace {

namespace fs = std::filesystem;

constexpr wchar_t kSchemeEnd[] = L"://";

// A folder whose name ends in ":" may be followed by two separators.
bool isAddress(const std::wstring& text) {
  return !text.starts_with(L'/') && text.find(kSchemeEnd) != std::wstring::npos;
}

// The part of an address that names a file: without the server before it and the query after it.
std::wstring pathOfAddress(const std::wstring& address) {
  const std::wstring text = address.substr(0, address.find_first_of(L"?#"));
  const std::size_t scheme = text.find(kSchemeEnd);
  if (scheme == std::wstring::npos) return text;
  const std::size_t path = text.find(L'/', scheme + std::size(kSchemeEnd) - 1);
  return path == std::wstring::npos ? std::wstring() : text.substr(path);
}

std::size_t lastSeparator(const std::wstring& path) {
  return path.find_last_of(L"/" + PathTools::getWPathSeparator());
}

bool meansNoFile(int error) { return error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG; }

}  // namespace

std::wstring PathTools::getWPathSeparator() {
  return {static_cast<wchar_t>(QDir::separator().unicode())};
}

std::wstring PathTools::getFileName(const std::wstring& path) {
  const std::wstring local = isAddress(path) ? pathOfAddress(path) : path;
  return local.substr(lastSeparator(local) + 1);  // without a separator: from 0 on
}

std::wstring PathTools::getExtension(const std::wstring& path) {
  const std::wstring name = getFileName(path);
  const std::size_t dot = name.rfind(L'.');
  return dot == std::wstring::npos ? std::wstring() : name.substr(dot);
}

std::wstring PathTools::getDirectory(const std::wstring& path) {
  const std::size_t separator = lastSeparator(path);
  if (separator == std::wstring::npos) return {};
  return path.substr(0, separator == 0 ? 1 : separator);
}

bool PathTools::fileExists(const std::wstring& path) {
  const auto native = playerx::nativePath(path);
  return native && playerx::isTaken(*native);
}

std::uint64_t PathTools::getFileSize(const std::wstring& path) {
  const auto native = playerx::nativePath(path);
  if (!native) return 0;
  struct stat status {};
  if (::stat(native->c_str(), &status) != 0) return meansNoFile(errno) ? 0 : kUnknownSize;
  return S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : kUnknownSize;
}

std::uint64_t PathTools::getFileVersion(const std::wstring& path) {
  const auto native = playerx::nativePath(path);
  struct stat status {};
  if (!native || ::stat(native->c_str(), &status) != 0) return 0;
  const std::uint64_t facts[] = {static_cast<std::uint64_t>(status.st_dev),
                                 static_cast<std::uint64_t>(status.st_ino),
                                 static_cast<std::uint64_t>(status.st_size),
                                 static_cast<std::uint64_t>(playerx::modificationTime(status))};
  return std::max<std::uint64_t>(XXH3_64bits(facts, sizeof facts), 1);
}

bool PathTools::moveFile(const std::wstring& from, const std::wstring& to) {
  const auto source = playerx::nativePath(from);
  const auto target = playerx::nativePath(to);
  if (!source || !target || playerx::moveFileWithoutOverwriting(*source, *target) != 0)
    return false;
  playerx::forgetVersions(*source);
  return true;
}

bool PathTools::deleteFile(const std::wstring& path) {
  const auto native = playerx::nativePath(path);
  const bool hasVersions = native && playerx::hasRecord(*native);
  if (!native || ::unlink(native->c_str()) != 0) return false;
  if (hasVersions) playerx::forgetVersions(*native);
  return true;
}

std::uint64_t PathTools::getSpaceAvailable(const std::wstring& directory) {
  const auto native = playerx::nativePath(directory);
  if (!native) return kUnknownSize;
  std::error_code failure;
  const fs::space_info space = fs::space(playerx::nearestExisting(*native), failure);
  return failure ? kUnknownSize : static_cast<std::uint64_t>(space.available);
}

}  // namespace kvpm
