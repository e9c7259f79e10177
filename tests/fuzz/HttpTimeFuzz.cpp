// Input: the text of a date.
#include <cstdlib>
#include <ctime>

#include "kvsc/HttpTime.h"
#include "kvsc/SSLConnect.h"
#include "tests/fuzz/Fuzz.h"

namespace {

constexpr int kLastYear = 9999 - 1900;

/// The text that says this time, read as local time; empty beyond the years of four digits.
std::string textFor(std::time_t time) {
  std::tm local{};
  if (::localtime_r(&time, &local) == nullptr || local.tm_year > kLastYear) return {};
  return kvsc::formatHttpTime(time);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  ::setenv("TZ", "UTC0", 1);  // the same answers on every machine
  ::tzset();
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const kvsc::SSLConnect connection("LOCALHOST");
  const std::string text = fuzz::textOf(data, size);
  const std::time_t time = connection.convertHttpTime(text);
  fuzz::require(time == connection.convertHttpTime(text), "a text always says the same time");
  const std::string again = time > 0 ? textFor(time) : std::string();
  fuzz::require(again.empty() || connection.convertHttpTime(again) == time,
                "a time survives its text");
  return 0;
}
