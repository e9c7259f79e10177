#pragma once

#include <cstdint>
#include <string>

namespace kvpm {

/// Names and facts of paths. All operations are static and may be called from any thread.
///
/// For an address (a text with "://" that does not begin with a separator) `getFileName` and
/// `getExtension` look at its path alone, without query and fragment; in a local path every
/// character counts.
class PathTools {
 public:
  PathTools() = delete;

  /// The separator of the platform, one character: "/" or "\".
  static std::wstring getWPathSeparator();

  /// The text behind the last separator ("/" and the platform's own), extension included; empty
  /// when the path ends in a separator. 'https://h/a/film.avi?x=1' gives 'film.avi'.
  static std::wstring getFileName(const std::wstring& path);

  /// The extension of the file name from its last "." on, dot included, as it is spelt; empty when
  /// the name has no ".".
  static std::wstring getExtension(const std::wstring& path);

  /// The text before the last separator; empty if absent, the separator itself for a file
  /// in the root folder.
  static std::wstring getDirectory(const std::wstring& path);

  /// True when something of that name exists.
  static bool fileExists(const std::wstring& path);

  /// Size of the file in bytes; 0 if absent; `kUnknownSize` when it exists and its size
  /// cannot be learnt (a folder, for one).
  static std::uint64_t getFileSize(const std::wstring& path);

  /// The answer of `getFileSize` for a size that cannot be learnt: all bits set.
  static constexpr std::uint64_t kUnknownSize = ~std::uint64_t{0};

  /// Stands for what a file holds as far as that shows without reading it: once the file has been
  /// written to or replaced, the answer is another. 0 when there is no file, or that cannot be
  /// learnt.
  static std::uint64_t getFileVersion(const std::wstring& path);

  /// Moves a file, across file systems too. Fails, and changes nothing, when the target exists.
  /// Returns success.
  static bool moveFile(const std::wstring& from, const std::wstring& to);

  /// Deletes a file, never a folder. Returns whether it is gone because of this call.
  static bool deleteFile(const std::wstring& path);

  /// The folder in which films are kept, without a separator at its end: the preference
  /// "General/MediaFolder" as the player set it up.
  static std::wstring getVeskMoviesFolder();

  /// Free bytes for the present user on the file system that holds `directory` (or its nearest
  /// existing parent); `kUnknownSize` when that cannot be learnt.
  static std::uint64_t getSpaceAvailable(const std::wstring& directory);
};

}  // namespace kvpm
