#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "kvsc/CancelToken.h"

namespace download {

/// The address in a redirection as it was received: without the two characters of the line end.
std::string redirectTarget(const std::string& redirection);

/// Tells a long chain of redirects from a loop. A server may answer the same address differently
/// the second time, so only one that is asked for over and over, or an endless chain, is a loop.
class RedirectLimit {
 public:
  static constexpr int kSameAddress = 10;
  static constexpr int kSteps = 1000;

  /// Takes note of one more request; false when it should not be made.
  bool mayAsk(const std::string& url);

 private:
  std::map<std::string, int> asked_;
  int steps_ = 0;
};

/// Bytes of the media behind `url`, asked for with HEAD requests that follow redirects. 0 when they
/// cannot be learnt, the redirects lead in a circle, or `cancel` ends the question.
std::uint64_t totalMediaSize(const std::string& url, kvsc::CancelToken& cancel);

}  // namespace download
