#include "playerx/cli/Suggestion.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace playerx::cli {

namespace {

/// Names that other programs use (left) for what has the right-hand name here.
constexpr std::string_view kSynonyms[][2] = {{"-P", "--media"},
                                             {"-d", "--media"},
                                             {"--dir", "--media"},
                                             {"--directory-prefix", "--media"},
                                             {"--output-dir", "--media"},
                                             {"-O", "--output"},
                                             {"--out", "--output"},
                                             {"--output-document", "--output"},
                                             {"-H", "--header"},
                                             {"-e", "--referer"},
                                             {"-b", "--cookie-jar"},
                                             {"--load-cookies", "--cookie-jar"},
                                             {"-n", "--netrc"},
                                             {"-u", "--netrc"},
                                             {"--user", "--netrc"},
                                             {"--http-user", "--netrc"},
                                             {"--password", "--netrc"},
                                             {"-k", "--cacert"},
                                             {"--insecure", "--cacert"},
                                             {"--no-check-certificate", "--cacert"},
                                             {"-t", "--tries"},
                                             {"--retry", "--tries"},
                                             {"--max-tries", "--tries"},
                                             {"--connect-timeout", "--timeout"},
                                             {"-m", "--timeout"},
                                             {"--max-time", "--timeout"},
                                             {"-A", "--header"},
                                             {"--user-agent", "--header"},
                                             {"-V", "--version"},
                                             {"-s", "--quiet"},
                                             {"--silent", "--quiet"},
                                             {"rm", "remove"},
                                             {"delete", "remove"},
                                             {"ls", "list"},
                                             {"status", "list"},
                                             {"download", "get"},
                                             {"fetch", "get"},
                                             {"start", "get"},
                                             {"stop", "pause"},
                                             {"unpause", "resume"}};

std::string nameOfSynonym(std::string_view word) {
  for (const auto& [synonym, name] : kSynonyms) {
    if (synonym == word) return std::string(name);
  }
  return {};
}

/// Damerau's distance: each row is computed from the two above it.
std::size_t errorsBetween(const std::string& typed, const std::string& meant) {
  using Row = std::vector<std::size_t>;
  Row beforeLast;
  Row last(meant.size() + 1);
  for (std::size_t j = 0; j < last.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= typed.size(); ++i) {
    Row row(meant.size() + 1, i);
    for (std::size_t j = 1; j <= meant.size(); ++j) {
      const std::size_t wrong = typed[i - 1] == meant[j - 1] ? 0 : 1;
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + wrong});
      const bool isSwapped =
          i > 1 && j > 1 && typed[i - 1] == meant[j - 2] && typed[i - 2] == meant[j - 1];
      if (isSwapped) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
    beforeLast = std::exchange(last, std::move(row));
  }
  return last.back();
}

}  // namespace

std::string nearestTo(const std::string& word, const std::vector<std::string>& candidates) {
  constexpr std::size_t kLongestWord = 100;
  if (word.size() > kLongestWord) return "";
  const std::string known = nameOfSynonym(word);
  if (std::find(candidates.begin(), candidates.end(), known) != candidates.end()) return known;
  std::string nearest;
  std::size_t fewest = word.size() / 3 + 1;
  for (const std::string& candidate : candidates) {
    const std::size_t errors = errorsBetween(word, candidate);
    if (errors >= fewest) continue;
    fewest = errors;
    nearest = candidate;
  }
  return nearest;
}

}  // namespace playerx::cli
