#include "playerx/window/playback/FilmStreams.h"

#include <array>
#include <cstring>
#include <utility>

namespace playerx::window {

namespace {

constexpr char kProtocol[] = "playerx";
const std::string kPrefix = std::string(kProtocol) + "://";

}  // namespace

/// One opening of a film by libmpv, which reads and closes it on one thread, and cancels it on
/// another one.
struct FilmStreams::Stream {
  explicit Stream(std::shared_ptr<GrowingFile> opened) : file(std::move(opened)) {}

  GuardMutex mutex;  // for `file` between closing and cancelling
  std::shared_ptr<GrowingFile> file;
  std::uint64_t offset = 0;
  bool hidesSize = false;
};

FilmStreams::FilmStreams() = default;
FilmStreams::~FilmStreams() = default;

void FilmStreams::attach(mpv_handle* mpv) {
  mpv_stream_cb_add_ro(mpv, kProtocol, this, &FilmStreams::openStream);
}

std::string FilmStreams::offer(std::shared_ptr<GrowingFile> file) {
  const GuardLock lock(mutex_);
  offered_ = std::move(file);
  address_ = kPrefix + std::to_string(++offers_);
  return address_;
}

FilmStreams::Stream* FilmStreams::newStream(const std::string& address) {
  const GuardLock lock(mutex_);
  if (address != address_) return nullptr;
  streams_.push_back(std::make_unique<Stream>(offered_));
  return streams_.back().get();
}

int FilmStreams::openStream(void* streams, char* address, mpv_stream_cb_info* info) {
  Stream* const stream = static_cast<FilmStreams*>(streams)->newStream(address);
  if (stream == nullptr) return MPV_ERROR_LOADING_FAILED;
  std::array<char, 4> head{};
  if (stream->file->arrived() >= head.size()) stream->file->read(0, head.data(), head.size());
  stream->hidesSize = isMpegProgramStream(head.data(), head.size());
  info->cookie = stream;
  info->read_fn = &FilmStreams::readStream;
  info->seek_fn = &FilmStreams::seekStream;
  info->size_fn = &FilmStreams::sizeOfStream;
  info->close_fn = &FilmStreams::closeStream;
  info->cancel_fn = &FilmStreams::cancelStream;
  return 0;
}

std::int64_t FilmStreams::readStream(void* cookie, char* data, std::uint64_t length) {
  auto& stream = *static_cast<Stream*>(cookie);
  const std::int64_t count = stream.file->read(stream.offset, data, length);
  if (count > 0) stream.offset += static_cast<std::uint64_t>(count);
  return count;
}

/// Refuses places that have not arrived: waiting for the index at a film's end would keep its
/// beginning from being shown.
std::int64_t FilmStreams::seekStream(void* cookie, std::int64_t offset) {
  auto& stream = *static_cast<Stream*>(cookie);
  if (offset < 0 || static_cast<std::uint64_t>(offset) > stream.file->arrived()) {
    return MPV_ERROR_GENERIC;
  }
  stream.offset = static_cast<std::uint64_t>(offset);
  return offset;
}

std::int64_t FilmStreams::sizeOfStream(void* cookie) {
  const auto& stream = *static_cast<Stream*>(cookie);
  const std::uint64_t total = stream.file->total();
  const bool isHidden = stream.hidesSize && !stream.file->isFinished();
  if (total == 0 || isHidden) return MPV_ERROR_UNSUPPORTED;
  return static_cast<std::int64_t>(total);
}

/// Gives the file back, but not the stream, which may be cancelled even after this.
void FilmStreams::closeStream(void* cookie) {
  auto& stream = *static_cast<Stream*>(cookie);
  const GuardLock lock(stream.mutex);
  stream.file.reset();
}

void FilmStreams::cancelStream(void* cookie) {
  auto& stream = *static_cast<Stream*>(cookie);
  const GuardLock lock(stream.mutex);
  if (stream.file) stream.file->cancel();
}

bool isMpegProgramStream(const char* head, std::size_t length) {
  constexpr std::array<char, 4> kPackHeader = {0, 0, 1, '\xBA'};
  return length >= kPackHeader.size() &&
         std::memcmp(head, kPackHeader.data(), kPackHeader.size()) == 0;
}

}  // namespace playerx::window
