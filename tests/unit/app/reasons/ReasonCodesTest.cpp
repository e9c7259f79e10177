#include <curl/curl.h>
#include <gmock/gmock.h>

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

#include "playerx/app/reasons/ProbeReason.h"
#include "playerx/transfers/TransferFailure.h"
#include "tests/support/TempDir.h"

namespace playerx {
namespace {

using Codes = std::set<std::string>;

const std::filesystem::path kSources = SOURCES_OF_THE_PLAYER;

/// The statuses of servers share one line of the document.
std::string documented(const std::string& code) {
  return code.starts_with("http_") ? "http_NNN" : code;
}

void collect(const std::string& text, const std::regex& pattern, Codes& codes) {
  for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match) {
    codes.insert(documented((*match)[1]));
  }
}

/// The codes that are written out in the player's sources.
Codes codesInSources() {
  // A reason is returned, named, assigned or refused with: {"code", a sentence}.
  const std::regex reason(
      R"re((?:return|FailureReason|=|refuse\(\w+,)\s*\{\s*"([a-z][a-z0-9_]*)"\s*[,+])re");
  Codes codes;
  for (const char* folder : {"playerx/app", "playerx/cli"}) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(kSources / folder)) {
      if (entry.path().extension() == ".cpp") {
        collect(support::readFile(entry.path()), reason, codes);
      }
    }
  }
  return codes;
}

/// The words of the download library's failures.
Codes codesOfTransfers() {
  Codes codes = {documented(failureWord(failureOfStatus(404)))};
  for (int number = 1; number < 100; ++number) {
    codes.insert(failureWord(static_cast<TransferFailure>(number)));
  }
  return codes;
}

Codes codesInDocument() {
  const std::string text = support::readFile(kSources / "docs/json-output.md");
  const std::size_t start = text.find("## Reason codes");
  std::istringstream lines(text.substr(start, text.find("## Exit status") - start));
  Codes codes;
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("| `")) continue;
    collect(line.substr(0, line.find('|', 1)), std::regex("`([^`]+)`"), codes);
  }
  return codes;
}

TEST(ReasonCodesTest, TheDocumentNamesExactlyTheCodesThatThereAre) {
  Codes codes = codesInSources();
  codes.merge(codesOfTransfers());
  EXPECT_EQ(codesInDocument(), codes);
}

TEST(ReasonCodesTest, WhateverASecondLookFindsIsInTheDocument) {
  const Codes known = codesInDocument();
  for (int code = 1; code < CURL_LAST; ++code) {
    for (const long redirects : {0L, 1L}) {
      const auto reason =
          reasonFromProbe({{static_cast<CURLcode>(code), redirects}, 0, -1, "films.test", ""});
      ASSERT_TRUE(reason);
      EXPECT_TRUE(known.contains(reason->code)) << reason->code;
    }
  }
  for (long status = 400; status < 600; ++status) {
    EXPECT_TRUE(known.contains(documented(reasonFromStatus(status, "films.test").code)));
  }
}

}  // namespace
}  // namespace playerx
