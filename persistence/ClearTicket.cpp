#include "persistence/ClearTicket.h"

#include <algorithm>
#include <utility>

#include "kvpm/StringTools.h"

namespace persistence {
namespace {

constexpr float kKnownVersion = 1.0F;

std::wstring_view strip(std::wstring_view text, wchar_t character) {
  text.remove_prefix(std::min(text.find_first_not_of(character), text.size()));
  return text.substr(0, text.find_last_not_of(character) + 1);
}

struct Line {
  std::size_t number;
  std::wstring_view text;  ///< trimmed once, not empty
};

/// The lines of a ticket that are not blank.
class Lines {
 public:
  explicit Lines(std::wstring_view text) : rest_(text) {}

  /// The next line; nullopt at the end of the text.
  std::optional<Line> next() {
    while (!rest_.empty()) {
      const Line line{++number_, trimTicketText(takeLine())};
      if (!line.text.empty()) return line;
    }
    return std::nullopt;
  }

 private:
  std::wstring_view takeLine() {
    const std::size_t length = std::min(rest_.find_first_of(L"\n\r"), rest_.size());
    const std::wstring_view line = rest_.substr(0, length);
    rest_.remove_prefix(length);
    rest_.remove_prefix(std::min<std::size_t>(rest_.starts_with(L"\r\n") ? 2 : 1, rest_.size()));
    return line;
  }

  std::wstring_view rest_;
  std::size_t number_ = 0;
};

/// Reads the lines behind the header.
class BodyReader {
 public:
  explicit BodyReader(ClearTicket& ticket) : ticket_(ticket) {}

  void read(const Line& line) {
    // Once more in `splitTicketLine`: the format trims a line exactly twice, and the second time
    // may remove what the first has exposed.
    const std::wstring_view text = trimTicketText(line.text);
    if (text == kTicketStart) {
      open(line.number);
    } else if (text == kTicketEnd) {
      close(line.number);
    } else if (film_) {
      set(splitTicketLine(line.text));
    }
  }

  void finish() {
    if (film_) report(film_->line, TicketProblem::kUnclosed);
    if (!hasStart_) report(0, TicketProblem::kNoStart);
  }

 private:
  void open(std::size_t line) {
    if (film_) report(film_->line, TicketProblem::kUnclosedAtStart);
    film_ = TicketFilm{line, {}, {}, {}};
    hasStart_ = true;
  }

  void close(std::size_t line) {
    if (!film_) {
      report(line, TicketProblem::kEndOutsideABlock);
    } else if (film_->url.empty()) {
      report(film_->line, TicketProblem::kNoUrl);
    } else {
      ticket_.films.push_back(*std::move(film_));
    }
    film_.reset();
  }

  void set(const TicketEntry& entry) {
    if (!entry.value) return;
    if (entry.key == L"title") film_->title = *entry.value;
    if (entry.key == L"contentProvider") film_->contentProvider = *entry.value;
    if (entry.key == L"url") film_->url = *entry.value;
  }

  void report(std::size_t line, TicketProblem problem) {
    ticket_.faults.push_back({line, problem});
  }

  ClearTicket& ticket_;
  std::optional<TicketFilm> film_;  ///< of the open block
  bool hasStart_ = false;
};

/// Returns the fault of the first line; nullopt when the ticket can be read. A line without a value
/// counts as a missing header, which the format allows.
std::optional<TicketProblem> readHeader(const Line& line, ClearTicket& ticket) {
  const TicketEntry entry = splitTicketLine(line.text);
  if (!entry.value) return std::nullopt;
  if (entry.key != kTicketVersion) return TicketProblem::kNoHeader;
  ticket.version = *entry.value;
  if (kvpm::StringTools::wstringToFloat(ticket.version) == kKnownVersion) return std::nullopt;
  return TicketProblem::kOtherVersion;
}

}  // namespace

std::wstring_view trimTicketText(std::wstring_view text) {
  for (const wchar_t character : {L'\t', L'\n', L'\r', L' '}) text = strip(text, character);
  return text;
}

TicketEntry splitTicketLine(std::wstring_view line) {
  const std::wstring_view text = trimTicketText(line);
  if (text == kTicketStart || text == kTicketEnd) return {text, L""};
  const std::size_t equals = text.find(L'=');
  const std::wstring_view key = trimTicketText(text.substr(0, equals));
  // Without "=" the value begins at 0 as well: the whole line is both.
  const std::size_t begin = equals == std::wstring_view::npos ? 0 : equals + 1;
  if (begin >= text.size()) return {key, std::nullopt};
  return {key, trimTicketText(text.substr(begin))};
}

ClearTicket readClearTicket(std::wstring_view text) {
  ClearTicket ticket;
  Lines lines(text);
  const std::optional<Line> first = lines.next();
  const auto problem = first ? readHeader(*first, ticket) : TicketProblem::kEmptyTicket;
  if (problem) {
    ticket.faults.push_back({first ? first->number : 0, *problem});
    return ticket;
  }
  BodyReader reader(ticket);
  while (const std::optional<Line> line = lines.next()) reader.read(*line);
  reader.finish();
  return ticket;
}

}  // namespace persistence
