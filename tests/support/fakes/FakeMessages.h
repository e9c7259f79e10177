#pragma once

#include <string>
#include <vector>

#include "playerx/framework/UserMessages.h"

namespace support {

/// The player's front end without a terminal: keeps what is said. One thread at a time.
class FakeMessages : public playerx::UserMessages {
 public:
  void tellUser(const std::string& sentence) override { sentences.push_back(sentence); }

  std::vector<std::string> sentences;
};

}  // namespace support
