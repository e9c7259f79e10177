#pragma once

#include <string>

namespace playerx::model {

/// What the download manager told the view about the item that it was working on.
struct Notice {
  enum Kind { kNoSpace, kUrlFailed, kBroken, kNotAuthorized, kSlotDeclined };
  Kind kind;
  std::string text;         ///< the path, the address or the services' words, UTF-8
  int code = 0;             ///< the services' error code
  unsigned int itemId = 0;  ///< the item that was announced last

  bool operator==(const Notice&) const = default;
};

}  // namespace playerx::model
