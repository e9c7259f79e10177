#include "playerx/app/inputs/OptionFault.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <initializer_list>
#include <string_view>

#include "playerx/app/inputs/InputText.h"
#include "playerx/app/model/FilmCheck.h"
#include "playerx/platform/SmallFile.h"
#include "playerx/platform/Text.h"
#include "playerx/transfers/Checksum.h"
#include "playerx/transfers/OwnHeaders.h"

namespace playerx::inputs {

namespace {

namespace fs = std::filesystem;

/// What JSON cannot carry would be kept as another text.
bool isUtf8(const std::string& text) { return !decodeUtf8(text).malformed; }

bool isOneLine(const std::string& text) {
  return std::none_of(text.begin(), text.end(), isControl) && isUtf8(text);
}

bool isToken(std::string_view name) {
  constexpr std::string_view kMarks = "!#$%&'*+-.^_`|~";
  return !name.empty() && std::all_of(name.begin(), name.end(), [&](unsigned char c) {
    return std::isalnum(c) != 0 || kMarks.find(static_cast<char>(c)) != std::string_view::npos;
  });
}

std::string firstOf(std::initializer_list<std::string> faults) {
  const auto* const found =
      std::find_if(faults.begin(), faults.end(), [](const auto& fault) { return !fault.empty(); });
  return found == faults.end() ? "" : *found;
}

std::string faultOfNumbers(const FilmOptions& options) {
  if (options.tries > kMostTries) return "So many tries cannot be counted.";
  if (options.timeout > kLongestTimeout) return "A time limit is a day at most.";
  return {};
}

/// Whether a file may be replaced by one of cookies: it holds some already, or nothing at all. The
/// cookie files of browsers and of curl begin with a line that says so; without it, each cookie has
/// seven fields, split by tabs.
bool mayHoldCookies(const std::string& path) {
  constexpr std::size_t kBeginning = 4096;
  constexpr std::ptrdiff_t kTabs = 6;
  const std::string text = readSmallFile(path, kBeginning);
  const std::string first = text.substr(0, text.find('\n'));
  return text.empty() || text.find("HTTP Cookie File") != std::string::npos ||
         first.starts_with("Set-Cookie:") || std::count(first.begin(), first.end(), '\t') == kTabs;
}

template <class Check>
std::string faultIfSet(const std::string& value, Check check) {
  return value.empty() ? std::string() : check(value);
}

}  // namespace

std::string faultOfHeader(const std::string& line) {
  const std::size_t colon = line.find(':');
  if (colon == std::string::npos || !isToken(line.substr(0, colon)) || !isOneLine(line)) {
    return "A header reads \"Name: value\", on one line of UTF-8.";
  }
  const std::string name = line.substr(0, colon);
  return transfers::isOwnHeader(name) ? "The header \"" + name + "\" is set by the player itself."
                                      : "";
}

std::string faultOfReferer(const std::string& referer) {
  if (!referer.empty() && isOneLine(referer)) return {};
  return "The referer is an address, on one line of UTF-8.";
}

std::string faultOfNetrcFile(const std::string& path) {
  std::error_code error;
  if (fs::path(path).is_absolute() && isUtf8(path) && fs::is_regular_file(path, error)) return {};
  return "There is no file \"" + displayPath(path) + "\" with user names and passwords.";
}

std::string faultOfCookieFile(const std::string& path) {
  std::error_code error;
  const fs::path file = path;
  const bool isPlace = file.is_absolute() && isUtf8(path) &&
                       fs::is_directory(file.parent_path(), error) &&
                       (!fs::exists(file, error) || fs::is_regular_file(file, error));
  const std::string problem = "Cookies cannot be kept in \"" + displayPath(path) + "\"";
  if (!isPlace) return problem + "; name a file in a folder that exists.";
  return mayHoldCookies(path) ? "" : problem + ", because it holds something else.";
}

std::string faultOfSum(const std::string& sha256) {
  if (transfers::normalSum(sha256)) return {};
  return "A checksum reads sha-256=DIGITS, with 64 hexadecimal digits, or sha-256 for the sum in "
         "the .sha256 file beside the film.";
}

std::string faultOfName(const std::string& name) {
  if (model::isFilmName(name)) return {};
  return "\"" + displayPath(name) + "\" is no file name; --media chooses the folder.";
}

std::string faultOfSharing(bool isOneAddress, const std::string& name, const FilmOptions& options) {
  if (isOneAddress) return {};
  if (!name.empty()) return "The option \"--output\" needs one address, no more.";
  if (options.sha256.empty()) return {};
  return "A checksum is that of one address; sha-256 alone takes those of the files beside.";
}

std::string faultOfUser(const FilmOptions& options) {
  if (isOneLine(options.username) && isOneLine(options.password)) return {};
  return "User name and password are text in UTF-8, each on one line.";
}

std::string faultOf(const FilmOptions& options) {
  for (const std::string& header : options.headers) {
    if (std::string fault = faultOfHeader(header); !fault.empty()) return fault;
  }
  return firstOf(
      {faultOfUser(options), faultOfNumbers(options), faultIfSet(options.referer, faultOfReferer),
       faultIfSet(options.netrcFile, faultOfNetrcFile),
       faultIfSet(options.cookieFile, faultOfCookieFile), faultIfSet(options.sha256, faultOfSum)});
}

}  // namespace playerx::inputs
