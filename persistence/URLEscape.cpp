#include "persistence/URLEscape.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace {

struct Escape {
  char character;
  std::string_view digits;  ///< the two that follow "%"
};

constexpr std::array<Escape, 10> kEscapes{{{' ', "20"},
                                           {'<', "3C"},
                                           {'>', "3E"},
                                           {'#', "23"},
                                           {'{', "7B"},
                                           {'}', "7D"},
                                           {'\\', "7C"},
                                           {'|', "5C"},
                                           {'^', "5E"},
                                           {'~', "7E"}}};

/// Reads the codes as they are, unlike `kEscapes` for a backslash and "|".
constexpr std::array<Escape, 10> kUnescapes{{{' ', "20"},
                                             {'<', "3C"},
                                             {'>', "3E"},
                                             {'#', "23"},
                                             {'{', "7B"},
                                             {'}', "7D"},
                                             {'|', "7C"},
                                             {'\\', "5C"},
                                             {'^', "5E"},
                                             {'~', "7E"}}};

/// Per byte: the digits of its escape, or nothing for a byte that stays.
constexpr auto kDigitsOf = [] {
  std::array<std::string_view, 256> table{};
  for (const Escape& escape : kEscapes) {
    table[static_cast<unsigned char>(escape.character)] = escape.digits;
  }
  return table;
}();

/// The character that two digits stand for, or NUL, which no escape stands for.
char characterFor(std::string_view digits) {
  for (const Escape& escape : kUnescapes) {
    if (escape.digits == digits) return escape.character;
  }
  return '\0';
}

}  // namespace

std::string URLEscape::escape(const std::string& text) {
  std::string escaped;
  escaped.reserve(text.size());
  std::size_t begin = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::string_view digits = kDigitsOf[static_cast<unsigned char>(text[i])];
    if (digits.empty()) continue;
    escaped.append(text, begin, i - begin).append(1, '%').append(digits);
    begin = i + 1;
  }
  return escaped.append(text, begin);
}

std::string URLEscape::unescape(const std::string& text) {
  std::string plain;
  plain.reserve(text.size());
  std::size_t begin = 0;
  for (std::size_t percent = text.find('%'); percent != std::string::npos;
       percent = text.find('%', percent + 1)) {
    const char character = characterFor(std::string_view(text).substr(percent + 1, 2));
    if (character == '\0') continue;
    plain.append(text, begin, percent - begin).append(1, character);
    percent += 2;
    begin = percent + 1;
  }
  return plain.append(text, begin);
}
