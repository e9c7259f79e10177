#include "playerx/cli/TerminalText.h"

#include <QList>
#include <QString>
#include <QTextBoundaryFinder>
#include <algorithm>
#include <clocale>
#include <cwchar>

#include "playerx/app/inputs/InputText.h"

namespace playerx::cli {

namespace {

constexpr char32_t kReplacement = 0xFFFD;        // stands for bytes that are not UTF-8
constexpr char32_t kEmojiPresentation = 0xFE0F;  // has terminals draw the character before it wide

/// `wcwidth` asks the locale of the thread, which need not know more than ASCII.
class WideLocale {
 public:
  WideLocale() : before_(uselocale(locale())) {}
  WideLocale(const WideLocale&) = delete;
  WideLocale& operator=(const WideLocale&) = delete;
  ~WideLocale() { uselocale(before_); }

 private:
  static locale_t locale() {
    static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return utf8;
  }
  const locale_t before_;
};

bool turnsDirection(char32_t character) {
  return (character >= 0x202A && character <= 0x202E) ||
         (character >= 0x2066 && character <= 0x2069);
}

bool isSafe(char32_t character) {
  const bool isControl = character < 0x20 || (character >= 0x7F && character < 0xA0);
  const bool breaksLine = character == 0x2028 || character == 0x2029;
  return !isControl && !breaksLine && !turnsDirection(character) && character != kReplacement;
}

bool isPlain(char byte) { return byte >= ' ' && byte < '\x7f'; }

/// Inside a `WideLocale`.
std::size_t widthOf(char32_t character) {
  if (character == kEmojiPresentation) return 1;
  return static_cast<std::size_t>(std::max(wcwidth(static_cast<wchar_t>(character)), 0));
}

/// Inside a `WideLocale`. A terminal that does not join the parts of a character draws each.
std::size_t widthOf(const QString& text) {
  std::size_t width = 0;
  for (const char32_t character : text.toUcs4()) width += widthOf(character);
  return width;
}

}  // namespace

std::string printable(const std::string& text) {
  // Most texts of a long queue are plain.
  if (std::all_of(text.begin(), text.end(), isPlain)) return text;
  std::u32string clean;
  for (const char32_t character : QString::fromStdString(text).toUcs4()) {
    clean += isSafe(character) ? character : U'?';
  }
  return QString::fromStdU32String(clean).toStdString();
}

std::string quoted(const std::string& typed) {
  return "\"" + printable(inputs::displayPath(typed)) + "\"";
}

std::string withoutPasswords(const std::string& sentence) {
  constexpr char kEnds[] = " \t\r\n\"";
  std::string shown;
  std::size_t end = 0;
  for (std::size_t begin = 0; begin < sentence.size(); begin = end + 1) {
    end = std::min(sentence.find_first_of(kEnds, begin), sentence.size());
    const std::string word = sentence.substr(begin, end - begin);
    shown += inputs::displayPath(word);
    shown += sentence.substr(end, 1);
  }
  return shown;
}

std::size_t columnsOf(const std::string& text) {
  const WideLocale locale;
  return widthOf(QString::fromStdString(text));
}

std::string cutTo(const std::string& text, std::size_t columns) {
  const WideLocale locale;
  const QString whole = QString::fromStdString(text);
  if (widthOf(whole) <= columns) return text;
  if (columns == 0) return "";
  QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, whole);
  qsizetype keep = 0;
  std::size_t used = 1;  // the mark of the cut
  for (;;) {
    const qsizetype next = characters.toNextBoundary();
    if (next < 0) break;
    used += widthOf(whole.mid(keep, next - keep));
    if (used > columns) break;
    keep = next;
  }
  return whole.left(keep).toStdString() + "…";
}

std::string progressBar(int percent, int width) {
  const int inner = std::max(0, width - 2);
  const int filled = inner * std::clamp(percent, 0, 100) / 100;
  return "[" + std::string(static_cast<std::size_t>(filled), '#') +
         std::string(static_cast<std::size_t>(inner - filled), ' ') + "]";
}

}  // namespace playerx::cli
