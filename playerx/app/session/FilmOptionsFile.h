#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "playerx/app/model/ItemState.h"
#include "playerx/transfers/TransferSettings.h"

namespace playerx::session {

/// How the films of the queue are fetched, kept in a file beside the queue, which has no room for
/// it. There may be passwords in it: only its owner can read the file. Damaged lines are passed
/// over, and what cannot be written is lost with the run. Used by one thread.
class FilmOptionsFile {
 public:
  static constexpr char kFileName[] = "film-options.jsonl";

  /// Reads the file of this data folder, if there is one.
  explicit FilmOptionsFile(const std::filesystem::path& dataFolder);

  /// By the form in which addresses are remembered.
  const std::map<std::string, FilmOptions>& all() const { return options_; }

  /// Forgets those of the film of an address, and saves that.
  void forget(const std::string& address);

  /// Adds options of the film of an address to those that it has, and saves them. Returns them all.
  FilmOptions add(const std::string& address, const FilmOptions& options);

  /// Forgets those of films that are complete or no longer in the queue. Returns their addresses.
  std::vector<std::string> prune(const std::vector<model::ItemState>& queue);

 private:
  void append(const std::string& address, const FilmOptions& options) const;
  void save() const;

  const std::filesystem::path file_;
  std::map<std::string, FilmOptions> options_;
};

}  // namespace playerx::session
