#include "kvpm/Unicode.h"

#include <QByteArray>
#include <algorithm>
#include <limits>

#include "playerx/platform/Text.h"

namespace kvpm {
namespace {

bool fits(std::size_t count, std::size_t capacity) {
  constexpr auto kMost = static_cast<std::size_t>(std::numeric_limits<int>::max());
  return count <= std::min(capacity, kMost);
}

}  // namespace

int UTF8ToWchart(const char* source, std::size_t length, wchar_t* target, std::size_t capacity,
                 bool* error) {
  const playerx::WideText text = playerx::decodeUtf8({source, length});
  if (error != nullptr) *error = text.malformed;
  if (!fits(text.characters.size(), capacity)) return -1;
  std::copy(text.characters.begin(), text.characters.end(), target);
  return static_cast<int>(text.characters.size());
}

int WchartToUTF8(const wchar_t* source, std::size_t length, char* target, std::size_t capacity,
                 bool final) {
  const QByteArray bytes = playerx::toQString({source, length}).toUtf8();
  const auto size = static_cast<std::size_t>(bytes.size());
  if (!fits(final ? size + 1 : size, capacity)) return -1;
  std::copy(bytes.begin(), bytes.end(), target);
  if (final) target[size] = '\0';
  return static_cast<int>(size);
}

}  // namespace kvpm
