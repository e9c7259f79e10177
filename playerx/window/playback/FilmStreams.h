#pragma once

#include <mpv/stream_cb.h>

#include <memory>
#include <string>
#include <vector>

#include "playerx/window/playback/GrowingFile.h"

namespace playerx::window {

/// Gives libmpv the bytes of films that may still be arriving, under addresses of its own.
///
/// libmpv may cancel a stream that it has closed already: destroy this after the libmpv handle.
/// Operations may be called from any thread.
class FilmStreams {
 public:
  FilmStreams();
  FilmStreams(const FilmStreams&) = delete;
  FilmStreams& operator=(const FilmStreams&) = delete;
  ~FilmStreams();

  /// Has `mpv` ask here for the addresses that `add` gives.
  void attach(mpv_handle* mpv);

  /// The address under which libmpv can open this file from now on, and no earlier one.
  std::string offer(std::shared_ptr<GrowingFile> file);

 private:
  struct Stream;

  static int openStream(void* streams, char* address, mpv_stream_cb_info* info);
  static std::int64_t readStream(void* cookie, char* data, std::uint64_t length);
  static std::int64_t seekStream(void* cookie, std::int64_t offset);
  static std::int64_t sizeOfStream(void* cookie);
  static void closeStream(void* cookie);
  static void cancelStream(void* cookie);

  Stream* newStream(const std::string& address);

  GuardMutex mutex_;
  std::shared_ptr<GrowingFile> offered_ KVPM_GUARDED_BY(mutex_);
  std::string address_ KVPM_GUARDED_BY(mutex_);
  int offers_ KVPM_GUARDED_BY(mutex_) = 0;
  std::vector<std::unique_ptr<Stream>> streams_ KVPM_GUARDED_BY(mutex_);
};

/// Whether these first bytes of a file are those of an MPEG program stream, whose length is looked
/// for at its end.
bool isMpegProgramStream(const char* head, std::size_t length);

}  // namespace playerx::window
