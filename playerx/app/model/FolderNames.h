#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace playerx::model {

/// Tells which files are not there: reads a folder once instead of looking for each of many files
/// in it. What comes or goes after a folder was read is not seen. Used by one thread at a time.
class FolderNames {
 public:
  /// Whether no file of this name was in the folder; false also when a look at the file itself is
  /// cheaper, because few were asked for, or alone can tell, because the folder cannot be read or a
  /// file may have several names.
  bool lacks(std::string_view folder, std::string_view name);

 private:
  struct Folder {
    int asked = 0;
    std::optional<std::vector<std::size_t>> hashes;  ///< of its names, sorted; nullopt: not known
  };

  std::map<std::string, Folder, std::less<>> folders_;
};

}  // namespace playerx::model
