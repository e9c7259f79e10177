#include "kvsc/HttpTime.h"

#include <array>
#include <climits>
#include <cstdio>
#include <optional>

#include "kvsc/TextScanner.h"

namespace kvsc {
namespace {

constexpr int kFirstYear = 1900;

constexpr std::array<const char*, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr std::array<const char*, 7> kWeekdays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

template <std::size_t kSize>
std::optional<int> indexOf(const std::array<const char*, kSize>& names, std::string_view name) {
  for (std::size_t i = 0; i < kSize; ++i) {
    if (names[i] == name) return static_cast<int>(i);
  }
  return std::nullopt;
}

// "hh:mm:ss"
bool readClock(TextScanner& scanner, std::tm& time) {
  const auto hour = scanner.number();
  if (!hour || !scanner.character(':')) return false;
  const auto minute = scanner.number();
  if (!minute || !scanner.character(':')) return false;
  const auto second = scanner.number();
  if (!second) return false;
  time.tm_hour = *hour;
  time.tm_min = *minute;
  time.tm_sec = *second;
  return true;
}

std::optional<std::tm> readTime(std::string_view text) {
  TextScanner scanner(text);
  std::tm time{};
  const auto weekday = scanner.word();
  const auto day = weekday ? scanner.number() : std::nullopt;
  const auto monthName = day ? scanner.word() : std::nullopt;
  const auto year = monthName ? scanner.number() : std::nullopt;
  if (!year || *year < INT_MIN + kFirstYear || !readClock(scanner, time)) return std::nullopt;
  const auto month = indexOf(kMonths, *monthName);
  if (!month) return std::nullopt;
  time.tm_wday = indexOf(kWeekdays, weekday->substr(0, 3)).value_or(0);
  time.tm_mday = *day;
  time.tm_mon = *month;
  time.tm_year = *year - kFirstYear;
  time.tm_isdst = -1;  // as the local rules say for that day
  return time;
}

}  // namespace

std::time_t parseHttpTime(std::string_view text) {
  std::optional<std::tm> time = readTime(text);
  return time ? std::mktime(&*time) : 0;
}

// The servers that answer 304 expect exactly this form, `ctime` put in another order.
std::string formatHttpTime(std::time_t time) {
  std::tm local{};
  ::tzset();
  if (::localtime_r(&time, &local) == nullptr) return {};
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%s, %d %s %lld %02d:%02d:%02d GMT",
                kWeekdays[static_cast<std::size_t>(local.tm_wday)], local.tm_mday,
                kMonths[static_cast<std::size_t>(local.tm_mon)],
                static_cast<long long>(local.tm_year) + kFirstYear, local.tm_hour, local.tm_min,
                local.tm_sec);
  return text.data();
}

}  // namespace kvsc
