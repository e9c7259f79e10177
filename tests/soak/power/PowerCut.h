#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <random>
#include <string>

#include "tests/support/UniqueFd.h"

namespace power_test {

inline constexpr std::int64_t kSecond = 1'000'000'000;  // nanoseconds

/// The environment of what works until the power is cut: another run of the machine than that of
/// this program, which reads what is left.
inline const std::map<std::string, std::string> kBeforeTheCut = {
    {"VESK_BOOT_ID", "before the power cut"}};

/// 30, or what `./dev soak` was told.
int cutsToTry();

/// Whether this machine lets the process mount disks; says so when it does not.
bool mayMount();

/// Whether files in a folder keep extended attributes; says so when they do not.
bool mayKeepAttributes(const std::filesystem::path& folder);

/// The environment of a program whose doings in `folder` are to be recorded in the file `record`.
std::map<std::string, std::string> recordingIn(const std::filesystem::path& record,
                                               const std::filesystem::path& folder);

/// Any entry of a record of this size but the last.
std::size_t anyEntry(std::size_t size, std::mt19937& random);

/// A file in memory.
support::UniqueFd diskOf(const std::string& content);

}  // namespace power_test
