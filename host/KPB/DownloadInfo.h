#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace KPB {

/// What the download library needs, beside the address, to fetch and unlock one file. A record:
/// copied by value. Text is UTF-8.
class DownloadInfo {
 public:
  /// The queue's id of the item.
  unsigned int getDownloadId() const { return downloadId_; }
  void setDownloadId(unsigned int id) { downloadId_ = id; }

  /// Credentials for the content server, valid for a short time; empty for none.
  const std::string& getTempUsername() const { return tempUsername_; }
  void setTempUsername(const std::string& name) { tempUsername_ = name; }
  const std::string& getTempPassword() const { return tempPassword_; }
  void setTempPassword(const std::string& password) { tempPassword_ = password; }

  /// The rights data that belongs to the file; empty for a file without protection.
  const std::vector<unsigned char>& getSTRDChunk() const { return strdChunk_; }
  void setSTRDChunk(const unsigned char* bytes, std::size_t length) {
    strdChunk_.assign(bytes, bytes + length);
  }

  /// Name, without folder, of the finished file.
  const std::string& getOutputFilename() const { return outputFilename_; }
  void setOutputFilename(const std::string& name) { outputFilename_ = name; }

  /// Folder that receives the finished file.
  const std::string& getMoviesDirectory() const { return moviesDirectory_; }
  void setMoviesDirectory(const std::string& folder) { moviesDirectory_ = folder; }

  /// Folder for the file while it arrives.
  const std::string& getDownloadDirectory() const { return downloadDirectory_; }
  void setDownloadDirectory(const std::string& folder) { downloadDirectory_ = folder; }

  /// Display title.
  const std::string& getTitle() const { return title_; }
  void setTitle(const std::string& title) { title_ = title; }

  /// Whether all fields are equal.
  bool operator==(const DownloadInfo&) const = default;

 private:
  unsigned int downloadId_ = 0;
  std::string tempUsername_;
  std::string tempPassword_;
  std::vector<unsigned char> strdChunk_;
  std::string outputFilename_;
  std::string moviesDirectory_;
  std::string downloadDirectory_;
  std::string title_;
};

}  // namespace KPB
