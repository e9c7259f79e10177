#include <curl/curl.h>
#include <gmock/gmock.h>

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

#include "playerx/app/reasons/ServerProbe.h"
#include "tests/support/TempDir.h"

namespace playerx::reasons {
namespace {

using Codes = std::set<std::string>;

/// The statuses of servers share one line of the document.
std::string documented(const std::string& code) {
  return code.starts_with("http_") ? "http_NNN" : code;
}

Codes codesOfReasons() {
  Codes codes;
  for (int number = 1; number < 600; ++number) {
    codes.insert(documented(codeOf(static_cast<Reason>(number))));
  }
  return codes;
}

Codes codesInDocument() {
  const std::filesystem::path sources = SOURCES_OF_THE_PLAYER;
  const std::string text = support::readFile(sources / "docs/json-output.md");
  const std::size_t start = text.find("## Reason codes");
  std::istringstream lines(text.substr(start, text.find("## Exit status") - start));
  const std::regex code("`([^`]+)`");
  Codes codes;
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("| `")) continue;
    const std::string cell = line.substr(0, line.find('|', 1));
    for (std::sregex_iterator match(cell.begin(), cell.end(), code), end; match != end; ++match) {
      codes.insert((*match)[1]);
    }
  }
  return codes;
}

TEST(ReasonCodesTest, TheDocumentNamesExactlyTheCodesThatThereAre) {
  EXPECT_EQ(codesInDocument(), codesOfReasons());
}

TEST(ReasonCodesTest, EverythingThatAProbeFindsIsInTheDocument) {
  const Codes known = codesInDocument();
  for (int code = 1; code < CURL_LAST; ++code) {
    for (const long redirects : {0L, 1L}) {
      const auto explanation = explainProbe(
          {"http://films.test/a.avi", {static_cast<CURLcode>(code), redirects}, "", 0, -1});
      ASSERT_TRUE(explanation);
      EXPECT_TRUE(known.contains(explanation->code())) << explanation->code();
    }
  }
}

}  // namespace
}  // namespace playerx::reasons
