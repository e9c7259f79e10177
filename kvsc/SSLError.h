#pragma once

#include <string>

namespace kvsc {

/// One entry of the crypto library's error queue.
///
/// A plain record, owned by the caller of `SSLConnect::checkErrors`.
class SSLError {
 public:
  const std::string& getFileName() const { return fileName_; }
  void setFileName(const std::string& fileName) { fileName_ = fileName; }

  int getLineNumber() const { return lineNumber_; }
  void setLineNumber(int lineNumber) { lineNumber_ = lineNumber; }

  /// Additional data of the entry, such as a name; often empty.
  const std::string& getData() const { return data_; }
  void setData(const std::string& data) { data_ = data; }

  int getFlags() const { return flags_; }
  void setFlags(int flags) { flags_ = flags; }

  const std::string& getHumanReadable() const { return humanReadable_; }
  void setHumanReadable(const std::string& text) { humanReadable_ = text; }

 private:
  std::string fileName_;
  int lineNumber_ = 0;
  std::string data_;
  int flags_ = 0;
  std::string humanReadable_;
};

}  // namespace kvsc
