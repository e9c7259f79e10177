#pragma once

#include <string>

namespace playerx {

/// Id under which the download library offers `FilmRecovery`.
inline constexpr char DIN_FilmRecovery[] = "com.vesk.playback.interface.FilmRecovery";

/// Takes back films whose completion was lost: the process died, or the power failed, after the
/// film was in its place and before the queue said so. Offered by the library's plug-in: who has
/// asked for it confirms each film.
///
/// Any thread; may take the disk's time.
class FilmRecovery {
 public:
  FilmRecovery() = default;
  FilmRecovery(const FilmRecovery&) = delete;
  FilmRecovery& operator=(const FilmRecovery&) = delete;
  virtual ~FilmRecovery() = default;

  /// To be called for a film that the queue does not call complete, before a session for it is
  /// started. When the library has placed the file at `filmUtf8`, moves it back to the folder of
  /// arriving films, or, where that is on another file system, aside under a numbered name: the
  /// next session of its address finds it there, whole, and places it under the name that the queue
  /// has for it instead of beside itself. Returns whether it did.
  virtual bool takeBack(const std::string& filmUtf8, const std::string& downloadFolderUtf8) = 0;

  /// The same for a film of which the queue knows no file, or nothing at all: the film of this
  /// address, when it lies in the movies folder under the name that its address gives it.
  virtual bool takeBackFilmOf(const std::string& urlUtf8, const std::string& moviesFolderUtf8,
                              const std::string& downloadFolderUtf8) = 0;

  /// The queue calls the film of this address complete, so its completion cannot be lost any more.
  /// A completion that was reported is not enough: it may have come just after the film was
  /// stopped.
  virtual void confirm(const std::string& urlUtf8) = 0;
};

}  // namespace playerx
