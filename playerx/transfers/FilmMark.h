#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace playerx::transfers {

/// Tells a later session that a file is a whole film whose completion may have been lost: an
/// extended attribute, written when the last byte has come and removed a moment after the
/// completion was reported, once the queue has it. A record.
///
/// The mark moves with the file, so that no other file has to say where the film is. On a file
/// system without extended attributes, a film that was completed at the very moment of a crash is
/// fetched again.
struct FilmMark {
  std::string place;    ///< `digestOf` of `Address::place`
  std::string address;  ///< `digestOf` of `Address::remembered`
  std::uint64_t size = 0;
  std::string boot;  ///< digest of the boot whose memory the bytes may be in; empty: on the disk

  bool operator==(const FilmMark&) const = default;
};

/// A short name for a text, always the same: 16 hexadecimal digits.
std::string digestOf(std::string_view text);

/// The digest of the machine's present boot (`bootId`).
std::string currentBoot();

/// Writes the mark on an open file. Returns 0 or an error number (`errno` values), ENOTSUP where
/// the file system has no extended attributes.
int writeMark(int file, const FilmMark& mark);

/// The mark on a file, which may be missing; nullopt if absent. Follows no link.
std::optional<FilmMark> readMark(const std::filesystem::path& file);

/// Takes the mark off, where there is one.
void removeMark(const std::filesystem::path& file);

/// True when the file that carries the mark surely holds every byte of its film: it has the size,
/// and a power cut can have taken nothing.
bool isWhole(const FilmMark& mark, const std::filesystem::path& file);

}  // namespace playerx::transfers
