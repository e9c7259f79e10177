#pragma once

#include <set>
#include <string>
#include <vector>

namespace playerx {

/// Notices queue files that the module sets aside because it cannot read them; it does so without a
/// word. Build it before the module is loaded. Used by one thread.
class SetAsideFiles {
 public:
  /// `folder` is the player's data folder.
  explicit SetAsideFiles(std::string folder);

  /// Paths of the files that were set aside since this object was built.
  std::vector<std::string> setAside() const;

 private:
  std::set<std::string> present() const;

  const std::string folder_;
  const std::set<std::string> before_;
};

}  // namespace playerx
