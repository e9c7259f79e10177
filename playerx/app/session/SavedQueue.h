#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace VeskPlayerX {
class DownloadManagerInterface;
class QueueReaderInterface;
}  // namespace VeskPlayerX

namespace playerx::session {

/// Watches over the queue file: the download manager says nothing when it cannot read or write it.
///
/// Build it before the manager is loaded. Used by one thread. Each question is answered with one
/// sentence on what is wrong, empty when nothing is.
class SavedQueue {
 public:
  /// `folder` is the player's data folder.
  explicit SavedQueue(const std::string& folder);

  /// Whether the file, if there is one, can be read now: a manager that cannot read it begins with
  /// an empty queue.
  std::string readProblem() const;

  /// Copies the file, and that of an earlier release, to another folder. Returns why it could not,
  /// as `readProblem` does, else "".
  std::string copyTo(const std::string& folder) const;

  /// What to say when the file turns out to be no queue.
  std::string contentProblem() const;

  /// Gives a file of no bytes, which a power cut can leave, another name beside it, as the manager
  /// does with one that it cannot read. To be called before the manager is loaded.
  void setAsideEmptyFile() const;

  /// Takes a file that was open to others from everybody but its owner. Those that replace it are
  /// as it is.
  void keepToOwner() const;

  /// Has the manager, once it is loaded and has a view, save an empty queue, which sets a file
  /// aside that is no queue.
  void setRefusedFileAside(VeskPlayerX::DownloadManagerInterface& manager) const;

  /// Once the manager is loaded: why its queue is empty although the file is not; else "".
  std::string loadProblem(VeskPlayerX::DownloadManagerInterface& manager) const;

  /// Whether a new queue file can be written. Tries it, and leaves nothing behind.
  std::string writeProblem() const;

  /// Keeps room on the disk for one more save, in a file of its own: what is removed while the disk
  /// is full has to be saved before it can make room.
  void reserveRoom() const;

  /// Has the manager, to which a view is attached, save the queue once more. Returns one sentence
  /// when the file still lacks changes, else "". `reader` reads the same manager.
  std::string saveAgain(VeskPlayerX::DownloadManagerInterface& manager,
                        VeskPlayerX::QueueReaderInterface& reader) const;

  /// As `saveAgain`, but only when the last save has failed.
  std::string saveProblem(VeskPlayerX::DownloadManagerInterface& manager,
                          VeskPlayerX::QueueReaderInterface& reader) const;

  /// Paths of the files that the manager has set aside as unreadable, now or in an earlier run, and
  /// of which the user has not been told.
  std::vector<std::string> filesSetAside() const;

  /// Notes, in a file beside the queue, that the user has been told of all files set aside. To be
  /// called at the end of a run: one that is cut off may not have told it.
  void noteAllTold() const;

  /// Whether any such file lies in the folder, from whatever time.
  bool hasFileSetAside() const { return !unreadableFiles().empty(); }

 private:
  std::string kindProblem() const;
  std::set<std::string> unreadableFiles() const;
  std::set<std::string> filesTold() const;
  int tryToReplace() const;
  bool giveRoomBack() const;
  std::uintmax_t roomNeeded() const;
  int saveError() const;

  const std::string folder_;
  const std::string file_;
  const std::set<std::string> told_;  ///< files set aside that the user knows of
};

/// One sentence for each of these paths where something else than a file lies, so that it can
/// neither be read nor written.
std::vector<std::string> problemsOf(const std::vector<std::string>& files);

}  // namespace playerx::session
