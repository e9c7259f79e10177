#include "playerx/app/session/SavedQueue.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <QFile>
#include <QXmlStreamReader>
#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <memory>
#include <sstream>
#include <system_error>

#include "VeskPlayerX/DownloadManagerInterface.h"
#include "VeskPlayerX/QueueReaderInterface.h"
#include "kvpm/File.h"
#include "playerx/platform/Descriptor.h"
#include "playerx/platform/FileIo.h"
#include "playerx/platform/FileSync.h"
#include "playerx/platform/HiddenFile.h"
#include "playerx/platform/NativePath.h"
#include "playerx/platform/SmallFile.h"

namespace playerx::session {

using VeskPlayerX::DownloadManagerInterface;
using VeskPlayerX::QueueReaderInterface;

namespace {

constexpr char kQueueFile[] = "downloadmanager.xml";
constexpr char kLegacyFile[] = "DownloadQueue.dlq";
constexpr char kUnreadableMark[] = ".unreadable";

/// Names the files set aside of which the user has been told, one a line.
constexpr char kToldFile[] = "set-aside.txt";

/// Occupies space that is freed for a save when the disk is full.
constexpr char kRoomFile[] = "reserved-room";

/// Bytes that the next change may add to the file.
constexpr std::size_t kRoomToGrow = 4096;

/// Without the folder, which may be moved or reached by another name.
std::string nameOf(const std::string& file) {
  return std::filesystem::path(file).filename().string();
}

std::string wordsOf(int error) {
  return error == 0 ? "writing failed" : std::generic_category().message(error);
}

std::string unreadable(const std::string& file, int error) {
  return "The queue file " + file + " cannot be read (" + wordsOf(error) +
         "); nothing was changed. Try again, make it readable, or choose another folder with "
         "--data.";
}

/// Setting a field to its own value has the manager save the queue like any change; letting a
/// queue without items go on does the same. It writes only what the file does not hold already.
void saveOnceMore(DownloadManagerInterface& manager, QueueReaderInterface& reader) {
  const std::vector<VeskPlayerX::QueuedVersion> queue = reader.getVersions();
  if (queue.empty()) return manager.resume();
  const std::unique_ptr<VeskPlayerX::DownloadItemInterface> last(reader.getCopy(queue.back().id));
  if (last) manager.setPlayable(last->getId(), last->getReadyForProgressivePlayback());
}

/// Whether a queue file with this content names any item.
bool namesItems(const QByteArray& content) {
  QXmlStreamReader reader(content);
  return reader.readNextStartElement() && reader.name() == u"DownloadQueue" &&
         reader.readNextStartElement();
}

/// What stands in the place of a regular file; empty for a regular file, and for nothing at all.
std::string wrongKind(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) == 0) {
    if (S_ISREG(status.st_mode)) return {};
    return S_ISDIR(status.st_mode) ? "a folder" : "not a file but a pipe or a device";
  }
  const bool isDangling = errno == ENOENT && ::lstat(path.c_str(), &status) == 0;
  return isDangling ? "a link that leads nowhere" : "";
}

/// The error number (`errno` values) with which reading the whole file fails; 0 when it can be read
/// or is not there.
int readError(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.get() < 0) return errno == ENOENT ? 0 : errno;
  std::array<char, 1 << 16> buffer{};
  for (;;) {
    const IoResult result = readFully(file.get(), buffer.data(), buffer.size());
    if (result.error != 0 || result.bytes < buffer.size()) return result.error;
  }
}

/// Has the file take this many bytes of the disk. Returns 0 or an error number.
int takeRoom(int file, std::uintmax_t bytes) {
  // A long queue would take long to write; not every file system takes room without it.
  if (::fallocate(file, 0, 0, static_cast<off_t>(bytes)) == 0) return 0;
  if (errno != EOPNOTSUPP) return errno;
  const std::string filling(bytes, ' ');
  return writeFully(file, filling.data(), filling.size()).error;
}

bool isDiskFull(int error) { return error == ENOSPC || error == EDQUOT; }

/// Copies what the download manager would read, which after a power cut may be another version than
/// the one under the name. Returns 0 or an error number.
int copyContent(const std::string& from, const std::string& to) {
  kvpm::File source;
  const int error = source.open(QString::fromStdString(from).toStdWString(), kvpm::FileOpenRead);
  if (error != 0) return error;
  QFile copy(QString::fromStdString(to));
  if (!copy.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) return EIO;
  // Piece by piece: a long queue would be there as a whole beside what is made of it.
  std::vector<char> piece(std::size_t{1} << 18U);
  for (std::int64_t left = source.getTotalSize(); left > 0;) {
    const std::int64_t length = source.read(piece.data(), piece.size());
    if (length <= 0 || copy.write(piece.data(), length) != length) return EIO;
    left -= length;
  }
  return 0;
}

}  // namespace

SavedQueue::SavedQueue(const std::string& folder)
    : folder_(folder), file_(folder + "/" + kQueueFile), told_(filesTold()) {}

/// Why what lies there cannot be a queue file, whatever is in it.
std::string SavedQueue::kindProblem() const {
  for (const char* const name : {kQueueFile, kLegacyFile}) {
    const std::string kind = wrongKind(folder_ + "/" + name);
    if (kind.empty()) continue;
    return "The queue file " + folder_ + "/" + name + " is " + kind +
           "; nothing was changed. Move it away, or choose another folder with --data.";
  }
  return {};
}

std::string SavedQueue::readProblem() const {
  std::string problem = kindProblem();
  const int error = problem.empty() ? readError(file_) : 0;
  return error == 0 ? problem : unreadable(file_, error);
}

std::string SavedQueue::copyTo(const std::string& folder) const {
  std::string problem = kindProblem();
  if (!problem.empty()) return problem;
  for (const char* const name : {kQueueFile, kLegacyFile}) {
    const std::string from = folder_ + "/" + name;
    const int error = copyContent(from, folder + "/" + name);
    if (error != 0 && error != ENOENT) {
      return unreadable(from, error);
    }
  }
  return {};
}

std::string SavedQueue::contentProblem() const {
  return "The queue file " + file_ +
         " is damaged; nothing was changed. The next `get` sets it aside and begins a new one.";
}

void SavedQueue::setAsideEmptyFile() const {
  namespace fs = std::filesystem;
  std::error_code error;
  if (!fs::is_regular_file(file_, error) || fs::file_size(file_, error) != 0 || error) return;
  fs::path name = file_ + kUnreadableMark;
  for (int i = 2; fs::exists(name, error); ++i) {
    name = file_ + kUnreadableMark + "." + std::to_string(i);
  }
  fs::rename(file_, name, error);
}

void SavedQueue::keepToOwner() const {
  constexpr mode_t kOthers = 077;
  struct stat status {};
  const bool isOpen = ::lstat(file_.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
                      (status.st_mode & kOthers) != 0;
  if (isOpen && ::chmod(file_.c_str(), status.st_mode & 0777U & ~kOthers) != 0) errno = 0;
}

void SavedQueue::setRefusedFileAside(DownloadManagerInterface& manager) const {
  const bool isThere = QFile::exists(QString::fromStdString(file_));
  // Saves, as in `saveOnceMore`.
  if (manager.getNumberOfVideosInQueue() == 0 && isThere) manager.resume();
}

std::string SavedQueue::loadProblem(DownloadManagerInterface& manager) const {
  QFile file(QString::fromStdString(file_));
  if (manager.getNumberOfVideosInQueue() > 0 || !file.exists()) return {};
  const std::string problem = readProblem();
  if (!problem.empty()) return problem;
  if (file.open(QIODevice::ReadOnly) && !namesItems(file.readAll())) return {};
  return "The queue file " + file_ +
         " could not be read a moment ago; nothing was changed. Try again.";
}

std::string SavedQueue::writeProblem() const {
  const int error = tryToReplace();
  if (error == 0) return {};
  return "The queue file " + file_ + " cannot be written (" + wordsOf(error) +
         "); free some space or make it writable, or choose another folder with --data.";
}

std::string SavedQueue::saveAgain(DownloadManagerInterface& manager,
                                  QueueReaderInterface& reader) const {
  saveOnceMore(manager, reader);
  int error = saveError();
  if (isDiskFull(error) && giveRoomBack()) {
    saveOnceMore(manager, reader);
    error = saveError();
  }
  // The queue may have grown, or given its room up.
  if (error == 0) reserveRoom();
  if (error == 0) return {};
  return "The queue file " + file_ + " does not hold the last changes (" + wordsOf(error) +
         "); free some space or make it writable, then run the command again.";
}

std::string SavedQueue::saveProblem(DownloadManagerInterface& manager,
                                    QueueReaderInterface& reader) const {
  const int error = saveError();
  const bool isSaving = error == ECANCELED;  // on another thread, at this moment
  const bool hadNoItem = error == ENOENT && manager.getNumberOfVideosInQueue() == 0;
  return error == 0 || isSaving || hadNoItem ? "" : saveAgain(manager, reader);
}

/// Returns 0 or the error number (`errno` values) with which it failed.
int SavedQueue::tryToReplace() const {
  int error = 0;
  const HiddenFile trial = HiddenFile::create(file_, error);
  return error == 0 ? takeRoom(trial.descriptor(), roomNeeded()) : error;
}

void SavedQueue::reserveRoom() const {
  const std::string name = folder_ + "/" + kRoomFile;
  const Descriptor file(
      open(name.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, kOwnerOnly));
  struct stat status {};
  if (file.get() < 0 || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return;
  if (status.st_nlink != 1) return;  // it is a file of its user's, too
  const std::uintmax_t needed = roomNeeded();
  if (static_cast<std::uintmax_t>(status.st_size) < needed) takeRoom(file.get(), needed);
}

/// Whether there was any.
bool SavedQueue::giveRoomBack() const {
  std::error_code error;
  return std::filesystem::remove(folder_ + "/" + kRoomFile, error);
}

/// In bytes, for a whole new file beside the present one.
std::uintmax_t SavedQueue::roomNeeded() const {
  std::error_code isMissing;
  const std::uintmax_t size = std::filesystem::file_size(file_, isMissing);
  return (isMissing ? 0 : size) + kRoomToGrow;
}

std::vector<std::string> SavedQueue::filesSetAside() const {
  const std::set<std::string> now = unreadableFiles();
  std::vector<std::string> added;
  std::set_difference(now.begin(), now.end(), told_.begin(), told_.end(),
                      std::back_inserter(added));
  return added;
}

void SavedQueue::noteAllTold() const {
  const std::string record = folder_ + "/" + kToldFile;
  std::string lines;
  for (const std::string& file : unreadableFiles()) lines += nameOf(file) + '\n';
  if (lines == readSmallFile(record)) return;
  std::error_code error;
  if (lines.empty()) {
    std::filesystem::remove(record, error);
  } else {
    replaceSmallFile(record, lines);
  }
}

/// Without files that have gone: another one may be set aside under the name of theirs.
std::set<std::string> SavedQueue::filesTold() const {
  std::set<std::string> files = unreadableFiles();
  std::set<std::string> told;
  std::istringstream lines(readSmallFile(folder_ + "/" + kToldFile));
  for (std::string line; std::getline(lines, line);) told.insert(line);
  std::erase_if(files, [&told](const std::string& file) { return !told.contains(nameOf(file)); });
  return files;
}

std::set<std::string> SavedQueue::unreadableFiles() const {
  std::set<std::string> files;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder_, error)) {
    const bool isMarked =
        entry.path().filename().string().find(kUnreadableMark) != std::string::npos;
    if (isMarked) files.insert(entry.path());
  }
  return files;
}

/// The error number (`errno` values) with which saving the file has failed; 0 when it did not.
int SavedQueue::saveError() const {
  int error = 0;
  const std::filesystem::path target = followLinks(file_, error);
  if (error == 0) error = lastSaveError(target);
  struct stat status {};
  return error == 0 && ::stat(target.c_str(), &status) != 0 ? errno : error;
}

std::vector<std::string> problemsOf(const std::vector<std::string>& files) {
  std::vector<std::string> problems;
  for (const std::string& file : files) {
    const std::string kind = wrongKind(file);
    std::error_code error;
    // A link that leads nowhere is replaced.
    if (kind.empty() || !std::filesystem::exists(file, error)) continue;
    problems.push_back("What belongs into " + file +
                       " is forgotten at the end of this run: it is " + kind + ". Move that away.");
  }
  return problems;
}

}  // namespace playerx::session
