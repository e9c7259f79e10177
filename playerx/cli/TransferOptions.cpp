#include "playerx/cli/TransferOptions.h"

#include <QByteArray>
#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>

#include "playerx/app/inputs/OptionFault.h"
#include "playerx/cli/TerminalText.h"

namespace playerx::cli {

using session::Request;

namespace {

constexpr double kHighestRate = 1e15;
constexpr char kSumKind[] = "sha-256";

[[noreturn]] void complain(const std::string& sentence) { throw CLI::ValidationError(sentence); }

template <class Number>
std::optional<Number> numberIn(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isWhole = error == std::errc() && end == text.data() + text.size();
  return isWhole ? std::optional(number) : std::nullopt;
}

unsigned triesOf(const std::string& text) {
  if (text == "0" || text == "inf") return inputs::kMostTries;
  const auto tries = numberIn<unsigned>(text);
  if (tries && *tries <= inputs::kMostTries) return *tries;
  complain(quoted(text) + " is no number of tries; give 1 or more, or 0 or inf for no limit.");
}

std::chrono::seconds timeoutOf(const std::string& text) {
  const auto seconds = numberIn<double>(text);
  if (seconds && *seconds > 0 && *seconds <= inputs::kLongestTimeout.count()) {
    return std::chrono::seconds(static_cast<std::int64_t>(std::ceil(*seconds)));
  }
  complain(quoted(text) + " is no time limit; give seconds, from 1 to " +
           std::to_string(inputs::kLongestTimeout.count()) + ".");
}

/// The value when nothing is wrong with it.
std::string checked(std::string value, std::string (*faultOf)(const std::string&)) {
  const std::string fault = faultOf(value);
  if (!fault.empty()) complain(printable(fault));
  return value;
}

/// `path` itself when it cannot be made absolute: the complaint then names it as it was given.
std::string absolute(const std::string& path) {
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(path, error);
  return error ? path : absolute.string();
}

std::string netrcOfUser() {
  const char* const home = std::getenv("HOME");
  return checked(std::string(home != nullptr ? home : "") + "/.netrc", inputs::faultOfNetrcFile);
}

/// "sha-256=HEX", or "sha-256" for the sum that a file beside the film names.
void takeChecksum(const std::string& text, FilmOptions& options) {
  const std::size_t equals = std::min(text.find('='), text.size());
  const bool isSum = QByteArray::fromStdString(text.substr(0, equals)).toLower() == kSumKind;
  const std::string sum = text.substr(std::min(equals + 1, text.size()));
  const bool asksForFile = equals == text.size();
  // Another kind of sum is refused like one without digits.
  if (!isSum || !asksForFile) checked(isSum ? sum : "", inputs::faultOfSum);
  options.sha256 = sum;
  options.hasChecksumFile = asksForFile;
}

/// An option whose value, of which the help says the type, `take` reads.
void addText(CLI::App& command, const char* name, const char* type, const char* help,
             const std::function<void(const std::string&)>& take) {
  command.add_option_function<std::string>(name, take, help)->type_name(type);
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
  complain(quoted(text) +
           " is no rate; give bytes per second, with K, M or G behind the number for more, or "
           "none.");
}

void addRateLimit(CLI::App& command, Request& request) {
  addText(command, "--limit-rate", "RATE", "Most bytes per second of all films (500K, 2M, none)",
          [&request](const std::string& text) { request.rateLimit = rateOf(text); });
}

void addTransferOptions(CLI::App& command, Request& request) {
  addRateLimit(command, request);
  FilmOptions& options = request.options;
  addText(command, "--tries", "N", "Tries in a row without progress; 0 or inf for no limit",
          [&options](const std::string& text) { options.tries = triesOf(text); });
  addText(command, "--timeout", "SECONDS",
          "Seconds to connect, and without a byte, that end a try of the film itself",
          [&options](const std::string& text) { options.timeout = timeoutOf(text); });
  addText(command, "--checksum", "SUM",
          "sha-256=DIGITS that the film must have; sha-256 for those of FILM.sha256 beside it",
          [&options](const std::string& text) { takeChecksum(text, options); });
  command.add_flag_callback(
      "--netrc", [&options] { options.netrcFile = netrcOfUser(); },
      "Take user names and passwords from ~/.netrc");
  addText(command, "--netrc-file", "FILE", "Take them from this file",
          [&options](const std::string& text) {
            options.netrcFile = checked(absolute(text), inputs::faultOfNetrcFile);
          });
  // Not joined: each is one header.
  command
      .add_option_function<std::vector<std::string>>(
          "--header",
          [&options](const std::vector<std::string>& lines) {
            for (const std::string& line : lines) {
              options.headers.push_back(checked(line, inputs::faultOfHeader));
            }
          },
          "Further header of the requests, \"Name: value\"; may be repeated")
      ->take_all()
      ->expected(1)
      ->type_name("LINE")
      ->allow_extra_args(false);
  addText(command, "--referer", "ADDRESS", "Page that names the film",
          [&options](const std::string& text) {
            options.referer = checked(text, inputs::faultOfReferer);
          });
  addText(command, "--cookie-jar", "FILE", "Read cookies from this file, and keep them there",
          [&options](const std::string& text) {
            options.cookieFile = checked(absolute(text), inputs::faultOfCookieFile);
          });
}

}  // namespace playerx::cli
