#pragma once

#include <map>
#include <set>
#include <string>

namespace persistence {

/// Which queue files must not be replaced because they may still hold a queue. Used by one thread
/// at a time. Nothing is thrown.
class ProtectedFiles {
 public:
  /// Protects `path` until `source` has been read or is gone: the file whose content would be lost,
  /// either `path` itself or the one to be imported into it.
  void protect(const std::wstring& path, const std::wstring& source) noexcept;

  /// Notes that a file has been read, and whether it is no queue.
  void noteRead(const std::wstring& path, bool isRefused) noexcept;

  /// Moves a file that is no queue to a free name beside it. Returns false when `path` must not be
  /// replaced or deleted.
  bool prepareToReplace(const std::wstring& path) noexcept;

 private:
  bool setAsideRefused(const std::wstring& path);

  std::map<std::wstring, std::wstring> sources_;
  std::set<std::wstring> refused_;

  /// Set when there was no memory to note a file: then every file is protected, until one has been
  /// read.
  bool isEveryFileProtected_ = false;
};

}  // namespace persistence
