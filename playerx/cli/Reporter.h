#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>

#include "playerx/app/model/Progress.h"
#include "playerx/app/reasons/Reason.h"

namespace playerx::cli {

/// Of the format of what --json prints: a program that knows it can read every line that names it.
inline constexpr int kJsonVersion = 1;

/// One item of a printed queue.
struct Listing {
  int position = 0;  ///< from 1 on
  const model::ItemState& item;
  model::Progress progress{};                    ///< of an item that is arriving
  std::optional<reasons::Explanation> reason{};  ///< of a failed item, where it is known
  std::string oddity{};                          ///< of a complete film; empty if absent
  bool isLong = false;                           ///< print the address as well
};

/// Tells the user, or a program, what happens to the queue. Used on the main thread.
class Reporter {
 public:
  Reporter() = default;
  Reporter(const Reporter&) = delete;
  Reporter& operator=(const Reporter&) = delete;
  virtual ~Reporter() = default;

  virtual void added(const model::ItemState& item) = 0;

  /// Any difference other than an outcome.
  virtual void changed(const model::ItemState& item, const model::Progress& progress) = 0;

  /// `oddity` is a sentence on what is odd about the film, empty when nothing is.
  virtual void finished(const model::ItemState& item, const std::string& oddity) = 0;
  virtual void failed(const model::ItemState& item, const reasons::Explanation& reason) = 0;

  /// A film that was to be fetched and was there before, which a note says to people.
  virtual void wasThere(const model::ItemState& /*item*/) {}

  /// An argument of the command line that cannot be downloaded.
  virtual void refused(const std::string& argument, const reasons::Explanation& reason) = 0;

  /// One item of a printed queue; need not appear before `listedAll` or the end of the program.
  virtual void listed(const Listing& listing) = 0;

  /// How far the whole queue has come, after the items of a printed one.
  virtual void listedAll(const model::QueueProgress& queue) = 0;

  /// How far the whole queue has come, when that changes while films are downloaded.
  virtual void queueProgress(const model::QueueProgress& queue) = 0;

  /// What a command has done to the queue, in one sentence.
  virtual void done(const std::string& sentence) = 0;

  /// A sentence about the run as a whole.
  virtual void note(const std::string& sentence) = 0;
};

/// One JSON object per line on `out`; sentences for people go to `notes`.
std::unique_ptr<Reporter> makeJsonReporter(std::ostream& out, std::ostream& notes);

/// One line per state on `out`; failures and sentences go to `notes`.
std::unique_ptr<Reporter> makeLineReporter(std::ostream& out, std::ostream& notes);

/// As the line reporter, and below it one live line for the item that is arriving. `columns` gives
/// the present width of the terminal, 0 while the line must not be drawn; it is asked every time,
/// so that the line follows the window.
std::unique_ptr<Reporter> makeLiveReporter(std::ostream& out, std::ostream& notes,
                                           std::function<int()> columns);

}  // namespace playerx::cli
