#include "playerx/cli/TransferOptions.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>

#include "playerx/cli/TerminalText.h"

namespace playerx::cli {

using session::Request;

namespace {

constexpr double kHighestRate = 1e15;
constexpr unsigned kNoLimitOfTries = 1'000'000'000;
constexpr unsigned kLongestTimeout = 24 * 3600;  // seconds
constexpr std::size_t kSumDigits = 64;
constexpr char kSumKind[] = "sha-256";

/// Headers that the download library sets itself: others would break the transfer.
constexpr std::string_view kOwnHeaders[] = {"range",      "if-range",       "accept-encoding",
                                            "connection", "content-length", "transfer-encoding"};

[[noreturn]] void complain(const std::string& sentence) { throw CLI::ValidationError(sentence); }

template <class Number>
std::optional<Number> numberIn(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isWhole = error == std::errc() && end == text.data() + text.size();
  return isWhole ? std::optional(number) : std::nullopt;
}

std::string lowered(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

unsigned triesOf(const std::string& text) {
  if (text == "0" || text == "inf") return kNoLimitOfTries;
  const auto tries = numberIn<unsigned>(text);
  if (tries && *tries <= kNoLimitOfTries) return *tries;
  complain("\"" + printable(text) + "\" is no number of tries; give 1 or more, or inf.");
}

std::chrono::seconds timeoutOf(const std::string& text) {
  const auto seconds = numberIn<double>(text);
  if (seconds && *seconds > 0 && *seconds <= kLongestTimeout) {
    return std::chrono::seconds(static_cast<std::int64_t>(std::ceil(*seconds)));
  }
  complain("\"" + printable(text) + "\" is no time limit; give seconds, from 1 to " +
           std::to_string(kLongestTimeout) + ".");
}

bool isToken(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](unsigned char c) {
    return std::isalnum(c) != 0 ||
           std::string_view("!#$%&'*+-.^_`|~").find(char(c)) != std::string_view::npos;
  });
}

/// Does not repeat the header in its complaints: it may hold a password.
std::string headerOf(const std::string& line) {
  const std::size_t colon = line.find(':');
  const bool isControlled =
      std::any_of(line.begin(), line.end(), [](unsigned char c) { return c < ' ' || c == 0x7f; });
  if (colon == std::string::npos || !isToken(line.substr(0, colon)) || isControlled) {
    complain("A header reads \"Name: value\", on one line.");
  }
  const std::string name = lowered(line.substr(0, colon));
  const bool isOwn =
      std::find(std::begin(kOwnHeaders), std::end(kOwnHeaders), name) != std::end(kOwnHeaders);
  if (isOwn) complain("The header \"" + name + "\" is set by the player itself.");
  return line;
}

std::string refererOf(const std::string& text) {
  const bool isLine =
      std::none_of(text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 0x7f; });
  if (isLine && !text.empty()) return text;
  complain("The referer is an address, on one line.");
}

std::string netrcFile(const std::string& path) {
  std::error_code error;
  if (std::filesystem::is_regular_file(path, error)) {
    return std::filesystem::absolute(path, error);
  }
  complain("There is no file " + printable(path) + " with user names and passwords.");
}

std::string netrcOfUser() {
  const char* const home = std::getenv("HOME");
  return netrcFile(std::string(home != nullptr ? home : "") + "/.netrc");
}

std::string cookieFile(const std::string& path) {
  std::error_code error;
  const std::filesystem::path file = std::filesystem::absolute(path, error);
  if (std::filesystem::is_directory(file.parent_path(), error) &&
      !std::filesystem::is_directory(file, error)) {
    return file;
  }
  complain("Cookies cannot be kept in " + printable(path) + ": it is a folder, or lies in none.");
}

/// "sha-256=HEX", or "sha-256" for the sum that a file beside the film names.
void takeChecksum(const std::string& text, FilmOptions& options) {
  const std::size_t equals = std::min(text.find('='), text.size());
  const std::string kind = lowered(text.substr(0, equals));
  const std::string sum = text.substr(std::min(equals + 1, text.size()));
  const bool isHex =
      std::all_of(sum.begin(), sum.end(), [](unsigned char c) { return std::isxdigit(c) != 0; });
  const bool asksForFile = equals == text.size();
  if (kind != kSumKind || (!asksForFile && (sum.size() != kSumDigits || !isHex))) {
    complain(
        "A checksum reads sha-256=DIGITS, with 64 hexadecimal digits, or sha-256 for the sum in "
        "the .sha256 file beside the film.");
  }
  options.sha256 = sum;
  options.hasChecksumFile = asksForFile;
}

/// An option whose value `take` reads.
CLI::Option* addText(CLI::App& command, const char* name, const char* help,
                     const std::function<void(const std::string&)>& take) {
  return command.add_option_function<std::string>(name, take, help);
}

}  // namespace

std::uint64_t rateOf(const std::string& text) {
  if (text == "none") return 0;
  constexpr std::string_view kUnits = "KMG";
  std::string_view number = text;
  double factor = 1;
  if (!number.empty()) {
    const std::size_t unit = kUnits.find(static_cast<char>(std::toupper(number.back())));
    if (unit != std::string_view::npos) {
      factor = std::pow(1024, unit + 1);
      number.remove_suffix(1);
    }
  }
  const auto value = numberIn<double>(number);
  if (value && *value >= 0 && *value * factor <= kHighestRate) {
    return static_cast<std::uint64_t>(std::ceil(*value * factor));
  }
  complain("\"" + printable(text) +
           "\" is no rate; give bytes per second, with K, M or G behind the number for more, or "
           "none.");
}

void addRateLimit(CLI::App& command, Request& request) {
  addText(command, "--limit-rate", "Most bytes per second of all films (500K, 2M, none)",
          [&request](const std::string& text) { request.rateLimit = rateOf(text); });
}

void addTransferOptions(CLI::App& command, Request& request) {
  addRateLimit(command, request);
  FilmOptions& options = request.options;
  addText(command, "--tries", "Tries in a row without progress; inf for no limit",
          [&options](const std::string& text) { options.tries = triesOf(text); });
  addText(command, "--timeout", "Seconds to connect, and without a byte, that end a try",
          [&options](const std::string& text) { options.timeout = timeoutOf(text); });
  addText(command, "--checksum",
          "sha-256=DIGITS that the film must have; sha-256 for those of FILM.sha256 beside it",
          [&options](const std::string& text) { takeChecksum(text, options); });
  command.add_flag_callback(
      "--netrc", [&options] { options.netrcFile = netrcOfUser(); },
      "Take user names and passwords from ~/.netrc");
  addText(command, "--netrc-file", "Take them from this file",
          [&options](const std::string& text) { options.netrcFile = netrcFile(text); });
  // Not joined: each is one header.
  command
      .add_option_function<std::vector<std::string>>(
          "--header",
          [&options](const std::vector<std::string>& lines) {
            for (const std::string& line : lines) options.headers.push_back(headerOf(line));
          },
          "Further header of the requests, \"Name: value\"; may be repeated")
      ->take_all()
      ->expected(1)
      ->allow_extra_args(false);
  addText(command, "--referer", "Page that names the film",
          [&options](const std::string& text) { options.referer = refererOf(text); });
  addText(command, "--cookie-jar", "Read cookies from this file, and keep them there",
          [&options](const std::string& text) { options.cookieFile = cookieFile(text); });
}

}  // namespace playerx::cli
