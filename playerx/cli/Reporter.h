#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>

#include "playerx/app/model/ItemState.h"
#include "playerx/app/reasons/Reason.h"

namespace playerx::cli {

/// Tells the user, or a program, what happens to the queue. Used on the main thread.
class Reporter {
 public:
  Reporter() = default;
  Reporter(const Reporter&) = delete;
  Reporter& operator=(const Reporter&) = delete;
  virtual ~Reporter() = default;

  virtual void added(const model::ItemState& item) = 0;

  /// Any difference other than an outcome. `bytesPerSecond` is 0 when not known.
  virtual void changed(const model::ItemState& item, std::uint64_t bytesPerSecond) = 0;

  /// `oddity` is a sentence on what is odd about the film, empty when nothing is.
  virtual void finished(const model::ItemState& item, const std::string& oddity) = 0;
  virtual void failed(const model::ItemState& item, const reasons::Explanation& reason) = 0;

  /// An argument of the command line that cannot be downloaded.
  virtual void refused(const std::string& argument, const reasons::Explanation& reason) = 0;

  /// One item of a printed queue; `position` counts from 1.
  virtual void listed(int position, const model::ItemState& item) = 0;

  /// A sentence about the run as a whole.
  virtual void note(const std::string& sentence) = 0;
};

/// One JSON object per line on `out`; sentences for people go to `notes`.
std::unique_ptr<Reporter> makeJsonReporter(std::ostream& out, std::ostream& notes);

/// One line per state on `out`; failures and sentences go to `notes`.
std::unique_ptr<Reporter> makeLineReporter(std::ostream& out, std::ostream& notes);

/// As the line reporter, and below it one live line for the item that is arriving. `columns` is the
/// width of the terminal.
std::unique_ptr<Reporter> makeLiveReporter(std::ostream& out, std::ostream& notes, int columns);

}  // namespace playerx::cli
