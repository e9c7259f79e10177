#pragma once

#include <string>
#include <vector>

#include "playerx/cli/Reporter.h"

namespace playerx::cli {

/// Writes down in a line each what it is told.
class LoggingReporter : public Reporter {
 public:
  std::vector<std::string> lines;

  void added(const model::ItemState& item) override { lines.push_back("added " + item.url); }
  void changed(const model::ItemState& item, const model::Progress&) override {
    lines.push_back("changed " + std::string(model::statusWord(item.status)));
  }
  void finished(const model::ItemState&, const std::string& oddity) override {
    lines.push_back("finished" + oddity);
  }
  void failed(const model::ItemState&, const reasons::Explanation& reason) override {
    lines.push_back("failed " + reason.code());
  }
  void refused(const std::string& argument, const reasons::Explanation& reason) override {
    lines.push_back("refused " + argument + " " + reason.code());
  }
  void listed(const Listing&) override {}
  void listedAll(const model::QueueProgress&) override {}
  void queueProgress(const model::QueueProgress&) override {}
  void done(const std::string& sentence) override { lines.push_back(sentence); }
  void note(const std::string& sentence) override { lines.push_back(sentence); }
};

}  // namespace playerx::cli
