#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "playerx/platform/GuardMutex.h"
#include "playerx/transfers/PartFile.h"
#include "playerx/transfers/PartState.h"
#include "playerx/transfers/ResumePlan.h"

namespace playerx::transfers {

/// The files of one partial: `<key>.part` (the bytes), `<key>.json` (its state) and `<key>.rights`.
struct PartPaths {
  std::filesystem::path folder;
  std::string key;

  std::filesystem::path bytes() const { return folder / (key + ".part"); }
  std::filesystem::path state() const { return folder / (key + ".json"); }
  std::filesystem::path rights() const { return folder / (key + ".rights"); }
};

/// A partial that this process has claimed: nobody else, in whatever process, has the same one.
///
/// Built and destroyed on the files thread; between, one thread at a time works on it, but for
/// `makeDurable` and `state`, which any thread may call. Destroyed, it gives back what is reserved,
/// leaves the bytes for a later session, and takes its files away when there is nothing worth
/// keeping. Failures are error numbers (`errno` values).
class Part {
 public:
  /// Claims the partial, which need not exist yet. Null when somebody else has it, or with an error
  /// number other than 0 when its file cannot be opened.
  static std::unique_ptr<Part> claim(const PartPaths& paths, int& error);

  Part(const Part&) = delete;
  Part& operator=(const Part&) = delete;
  ~Part();

  const PartPaths& paths() const { return paths_; }
  PartState state() const;
  PartFacts facts() const;
  PartFile& file() { return file_; }

  /// True when the claim found no state, so that the partial may become anybody's.
  bool isNew() const { return isNew_; }

  /// The number by which the file system knows the bytes.
  std::uint64_t inode() const;

  /// The bytes, which are kept, now belong to this address. That of a new partial is written with
  /// its first version.
  int adopt(const std::string& address, const std::string& place);

  /// Drops the bytes: those that follow belong to another version of the file.
  int beginVersion(const Validator& validator, std::optional<std::uint64_t> total);

  /// The total has become known.
  int learnTotal(std::uint64_t total);

  /// How far the bytes have come; taken by the thread that writes them.
  struct Mark {
    std::uint64_t bytes = 0;
    unsigned version = 0;
  };
  Mark mark() const;

  /// Brings what was written up to `mark` to the disk, then notes that it is there. May run beside
  /// everything else.
  int makeDurable(const Mark& mark);

  /// Keeps the rights data beside the bytes.
  int keepRights(const std::vector<unsigned char>& rights);

  /// Writes that everything is there, and where it goes; the arguments as in `PartState`.
  int announceMove(const std::string& target, const std::string& source, const std::string& wished,
                   std::uint64_t size, std::uint64_t inode);

  /// The completion has been taken note of.
  int noteCompletion();

  /// The film is at its target. Its record stays; `<key>.part`, when there is one, goes.
  void placed() { isPlaced_ = true; }

  /// What was complete is there no more: begins anew.
  int forgetCompletion();

 private:
  Part(PartPaths paths, Descriptor file, std::uint64_t size, PartState state, bool isNew);
  int change(const std::function<void(PartState&)>& apply);
  int newVersion(const std::function<void(PartState&)>& apply);
  void leaveComplete(const PartState& state);
  void leavePartial();
  void removeFiles();

  const PartPaths paths_;
  const bool isNew_;
  PartFile file_;
  bool isPlaced_ = false;

  mutable GuardMutex mutex_;
  PartState state_ KVPM_GUARDED_BY(mutex_);
  unsigned version_ KVPM_GUARDED_BY(mutex_) = 0;
};

}  // namespace playerx::transfers
