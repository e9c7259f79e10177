#include "playerx/app/inputs/TicketCheck.h"

#include <optional>
#include <string_view>
#include <utility>

#include "kvpm/StringTools.h"

namespace playerx::inputs {

namespace {

using kvpm::StringTools;

struct Line {
  int number;
  std::wstring text;  ///< trimmed once, not empty
};

/// A key with its value; a line without "=" is both.
struct Entry {
  std::wstring key;
  std::wstring value;
};

std::wstring trimmed(std::wstring text) {
  for (const wchar_t character : {L'\t', L'\n', L'\r', L' '}) {
    text = StringTools::stripBeginingAndEndChar(text, character);
  }
  return text;
}

std::vector<Line> linesOf(const std::wstring& text) {
  std::vector<Line> lines;
  int number = 1;
  std::size_t start = 0;
  while (start <= text.size()) {
    const std::size_t end = std::min(text.find_first_of(L"\n\r", start), text.size());
    std::wstring line = trimmed(text.substr(start, end - start));
    if (!line.empty()) lines.push_back({number, std::move(line)});
    const bool crLf = text.compare(end, 2, L"\r\n") == 0;
    start = end + (crLf ? 2 : 1);
    ++number;
  }
  return lines;
}

/// The line is trimmed once more, as the manager does: that may take off what the first time laid
/// bare.
std::optional<Entry> entryOf(const std::wstring& text) {
  const std::wstring line = trimmed(text);
  const std::size_t equals = line.find(L'=');
  if (line.empty() || equals == line.size() - 1) return std::nullopt;
  if (equals == std::wstring::npos) return Entry{line, line};
  return Entry{trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1))};
}

/// Why the first line is no header; none when it is one, or an entry without value.
std::optional<std::string> headerProblem(const std::wstring& line) {
  const std::optional<Entry> entry = entryOf(line);
  if (!entry) return std::nullopt;
  if (entry->key != L"TixVeskVersion") return "A ticket begins with the line TixVeskVersion=1.0.";
  if (StringTools::wstringToFloat(entry->value) == 1.0F) return std::nullopt;
  return "This ticket's version is " + StringTools::wStringToString(entry->value) +
         "; only version 1.0 is known.";
}

/// Reads the lines behind the header.
class BodyReader {
 public:
  explicit BodyReader(TicketCheck& check) : check_(check) {}

  void read(const Line& line) {
    const std::wstring word = trimmed(line.text);
    if (word == L"start") {
      open(line.number);
    } else if (word == L"end") {
      close(line.number);
    } else if (const std::optional<Entry> entry = entryOf(line.text); film_ && entry) {
      set(*entry);
    }
  }

  void finish() {
    if (film_) problem(film_->line, "This film has no line \"end\".");
    if (!sawStart_) problem(0, "There is no line \"start\", so the ticket names no film.");
  }

 private:
  void open(int number) {
    if (film_) problem(film_->line, "This film has no line \"end\" before the next \"start\".");
    film_ = TicketFilm{{}, {}, {}, number};
    sawStart_ = true;
  }

  void close(int number) {
    if (!film_) return problem(number, "There is an \"end\" without a \"start\".");
    if (film_->url.empty()) {
      problem(film_->line, "This film has no line \"url=\", so it cannot be fetched.");
    } else {
      check_.films.push_back(*std::move(film_));
    }
    film_.reset();
  }

  void set(const Entry& entry) {
    if (entry.key == L"title") film_->title = entry.value;
    if (entry.key == L"contentProvider") film_->provider = entry.value;
    if (entry.key == L"url") film_->url = entry.value;
  }

  void problem(int line, const char* sentence) { check_.problems.push_back({line, sentence}); }

  TicketCheck& check_;
  std::optional<TicketFilm> film_;
  bool sawStart_ = false;
};

/// First line of a ticket that only the online services can read.
constexpr std::wstring_view kSealedLine = L"VeskSealedTicket 1";

}  // namespace

bool isSealedTicket(const std::wstring& text) {
  return text.substr(0, text.find_first_of(L"\n\r")) == kSealedLine;
}

TicketCheck checkClearTicket(const std::wstring& text) {
  TicketCheck check;
  const std::vector<Line> lines = linesOf(text);
  if (lines.empty()) {
    check.problems.push_back({0, "The ticket is empty."});
    return check;
  }
  if (const std::optional<std::string> problem = headerProblem(lines.front().text)) {
    check.problems.push_back({lines.front().number, *problem});
    return check;
  }
  BodyReader reader(check);
  for (std::size_t i = 1; i < lines.size(); ++i) reader.read(lines[i]);
  reader.finish();
  return check;
}

}  // namespace playerx::inputs
