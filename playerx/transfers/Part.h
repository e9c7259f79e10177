#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "playerx/platform/GuardMutex.h"
#include "playerx/transfers/FilmMark.h"
#include "playerx/transfers/PartFile.h"
#include "playerx/transfers/PartState.h"
#include "playerx/transfers/ResumePlan.h"

namespace playerx {
struct Address;
}

namespace playerx::transfers {

/// The files of one partial: `<key>.part` (the bytes) and `<key>.json` (its state).
struct PartPaths {
  std::filesystem::path folder;
  std::string key;

  static constexpr char kBytesExtension[] = ".part";
  static constexpr char kStateExtension[] = ".json";

  std::filesystem::path bytes() const { return folder / (key + kBytesExtension); }
  std::filesystem::path state() const { return folder / (key + kStateExtension); }
};

/// The `number`th of several partials whose addresses have one place, from 1 on. `key` is
/// `digestOf(Address::place)`.
PartPaths numberedPart(const std::filesystem::path& folder, const std::string& key,
                       unsigned number);

/// The digest of the place that the partial of this key comes from, whatever its number.
std::string placeOfKey(const std::string& key);

/// A partial that this process has claimed: no other session, in any process, has the same one.
///
/// One thread at a time works on it, but for `makeDurable` and `state`, which any thread may call.
/// Destroyed, it releases reserved space, leaves the bytes for a later session, and deletes its
/// files when there is nothing worth keeping; that may take the disk's time. Failures are error
/// numbers (`errno` values).
///
/// The state is written first when `save` is called or a large film begins: most small films are
/// complete before that is worth its while. Bytes without a state are not believed.
class Part {
 public:
  /// Claims the partial, which need not exist yet. Null when another session has it, or with an
  /// error number other than 0 when its file cannot be opened.
  static std::unique_ptr<Part> claim(const PartPaths& paths, int& error);

  Part(const Part&) = delete;
  Part& operator=(const Part&) = delete;
  ~Part();

  const PartPaths& paths() const { return paths_; }
  PartState state() const;
  PartFacts facts() const;
  PartFile& file() { return file_; }

  /// True when the claim found neither state nor mark: any film may use the partial.
  bool isNew() const { return isNew_; }

  /// True when the claim found every byte, proven and believed.
  bool isWhole() const { return isWhole_; }

  /// True when the state is on disk.
  bool isSaved() const;

  /// The bytes, which are kept, now belong to this address.
  int adopt(const Address& address);

  /// Drops the bytes: those that follow belong to another version of the file.
  int beginVersion(const Validator& validator, std::optional<std::uint64_t> total);

  /// Drops the bytes, which no session can use.
  void drop();

  /// The total has become known.
  int learnTotal(std::uint64_t total);

  /// Writes the state, unless that was done.
  int save();

  /// How far the bytes have come; taken by the thread that writes them.
  struct Mark {
    std::uint64_t bytes = 0;
    unsigned version = 0;
  };
  Mark mark() const;

  /// Brings what was written up to `mark` to the disk, then notes that it is there. May run beside
  /// everything else.
  int makeDurable(const Mark& mark);

  /// Every byte has come: writes what is in memory and marks the file as a whole film, which takes
  /// the place of the state. A film that took long is brought to the disk first; one that came in a
  /// moment is cheaper to fetch again than to wait for.
  int finish();

  /// The file has left for its place in the movies folder, as it is or as a copy.
  void placed();

 private:
  Part(PartPaths paths, Descriptor file, std::uint64_t size);
  void adoptKept(const std::optional<PartState>& kept, const std::optional<FilmMark>& mark);
  int change(const std::function<void(PartState&)>& apply);
  int store() KVPM_REQUIRES(mutex_);
  FilmMark filmMark() const;
  void deleteState();
  void leavePartial();

  const PartPaths paths_;
  PartFile file_;
  bool isNew_ = true;
  bool isWhole_ = false;  ///< the file carries a mark
  bool isPlaced_ = false;

  mutable GuardMutex mutex_;
  PartState state_ KVPM_GUARDED_BY(mutex_);
  bool isSaved_ KVPM_GUARDED_BY(mutex_) = false;
  unsigned version_ KVPM_GUARDED_BY(mutex_) = 0;
};

}  // namespace playerx::transfers
