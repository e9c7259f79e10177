#pragma once

#include <memory>
#include <ostream>

namespace playerx::cli {

/// Keeps standard output for the program's own lines.
///
/// The module and the libraries below it print diagnostics to standard output. While this object
/// lives, what they write there goes nowhere, or to standard error, and `stream` is what standard
/// output was. Build it before anything else prints. The whole process has one, which the main
/// thread builds and destroys; `stream` is not synchronised. When no descriptor is left, the
/// constructor throws `std::system_error`.
class StandardOutput {
 public:
  enum class Diagnostics { kDropped, kToStandardError };

  explicit StandardOutput(Diagnostics diagnostics);
  StandardOutput(const StandardOutput&) = delete;
  StandardOutput& operator=(const StandardOutput&) = delete;

  /// Flushes and gives standard output back.
  ~StandardOutput();

  std::ostream& stream() { return *stream_; }

  /// Of what standard output was; owned by this object.
  int descriptor() const { return kept_; }

 private:
  int kept_;  ///< descriptor of what standard output was
  std::unique_ptr<std::streambuf> buffer_;
  std::unique_ptr<std::ostream> stream_;
};

}  // namespace playerx::cli
