// The pages name files, commands and classes; each must be there.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

const fs::path kProject = VESK_PROJECT;

/// The folders of the sources, which a path in a page begins with.
const std::vector<std::string> kFolders = {
    "host",    "kvsc",  "item",  "persistence", "download", "plugin",      "demo",
    "playerx", "tests", "bench", "docs",        "examples", "credentials", "packaging"};

std::string textOf(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

std::vector<fs::path> pages() {
  std::vector<fs::path> pages = {kProject / "README.md", kProject / "CHANGELOG.md",
                                 kProject / "credentials/README.md"};
  for (const auto& entry : fs::directory_iterator(kProject / "docs")) {
    if (entry.path().extension() == ".md") pages.push_back(entry.path());
  }
  return pages;
}

/// The first group of each match of `pattern` in a page.
std::set<std::string> findAll(const fs::path& page, const std::string& pattern) {
  const std::string text = textOf(page);
  const std::regex expression(pattern);
  std::set<std::string> found;
  for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end;
       ++match) {
    found.insert((*match)[1]);
  }
  return found;
}

/// Whether a path in a page, perhaps without the end of a file's name, leads to something.
bool leadsSomewhere(const std::string& path) {
  for (const char* const end : {"", ".h", ".cpp"}) {
    if (fs::exists(kProject / (path + end))) return true;
  }
  return false;
}

/// Names without their ends of all files of the sources.
std::set<std::string> sourceNames() {
  std::set<std::string> names;
  for (const std::string& folder : kFolders) {
    for (const auto& entry : fs::recursive_directory_iterator(kProject / folder)) {
      names.insert(entry.path().stem().string());
    }
  }
  return names;
}

TEST(PagesTest, EachLinkLeadsToAFile) {
  for (const fs::path& page : pages()) {
    for (const std::string& link : findAll(page, R"(\]\(([^)#:]+)(#[^)]*)?\))")) {
      EXPECT_TRUE(fs::exists(page.parent_path() / link)) << link << " in " << page;
    }
  }
}

TEST(PagesTest, EachPathIsThere) {
  for (const fs::path& page : pages()) {
    for (const std::string& path : findAll(page, "`([a-z]+/[A-Za-z0-9_./-]+)`")) {
      const std::string folder = path.substr(0, path.find('/'));
      if (std::find(kFolders.begin(), kFolders.end(), folder) == kFolders.end()) continue;
      EXPECT_TRUE(leadsSomewhere(path)) << path << " in " << page;
    }
  }
}

TEST(PagesTest, EachCommandOfTheScriptIsOne) {
  const std::string script = textOf(kProject / "dev");
  for (const fs::path& page : pages()) {
    for (const std::string& command : findAll(page, R"(\./dev ([a-z]+))")) {
      EXPECT_THAT(script, testing::HasSubstr("\n  " + command + " ")) << page;
    }
  }
}

TEST(PagesTest, EachPartOfTheHouseIsAFileOfTheSources) {
  const std::set<std::string> names = sourceNames();
  const fs::path page = kProject / "docs/architecture.md";
  const std::set<std::string> parts = findAll(page, "`([A-Z][a-z]+[A-Z][A-Za-z]+)(::[a-z][^`]*)?`");
  EXPECT_GT(parts.size(), 20U);
  for (const std::string& part : parts) EXPECT_TRUE(names.contains(part)) << part;
}

TEST(PagesTest, EachPlaceThatNamesTheTypesOfFilmsNamesThemAll) {
  const std::string source = textOf(kProject / "plugin/NewDownload.cpp");
  const std::size_t list = source.find("kSupportedTypes{");
  ASSERT_NE(list, std::string::npos);
  const std::string types = source.substr(list, source.find(';', list) - list);
  const std::regex type("\"([.][a-z0-9]+)\"");
  EXPECT_GT(std::distance(std::sregex_iterator(types.begin(), types.end(), type), {}), 3);
  for (const char* place :
       {"README.md", "docs/json-output.md", "host/VeskPlayerX/DownloadManagerInterface.h",
        "plugin/NewDownload.h", "playerx/app/reasons/Reason.cpp", "playerx/cli/Options.cpp"}) {
    const std::string text = textOf(kProject / place);
    for (std::sregex_iterator match(types.begin(), types.end(), type), end; match != end; ++match) {
      const std::string each = (*match)[1];
      EXPECT_NE(text.find(each), std::string::npos) << each << " is missing in " << place;
    }
  }
}

/// All sources of the tests in one text.
std::string testSources() {
  std::string text;
  for (const auto& entry : fs::recursive_directory_iterator(kProject / "tests")) {
    if (entry.path().extension() == ".cpp") text += textOf(entry.path());
  }
  return text;
}

TEST(PagesTest, EachTestThatPinsADecisionIsThere) {
  const std::string sources = testSources();
  const auto named =
      findAll(kProject / "docs/decisions.md", R"(`([A-Z][A-Za-z]+\.[A-Z][A-Za-z0-9]+)`)");
  EXPECT_GT(named.size(), 25U);
  for (const std::string& name : named) {
    const std::size_t dot = name.find('.');
    const std::string head = "(" + name.substr(0, dot) + ", " + name.substr(dot + 1);
    const bool isThere = sources.find(head) != std::string::npos;
    EXPECT_TRUE(isThere) << name;
  }
}

/// The operations that a header declares virtual, in its order, as the page lists them.
std::string slotsOf(const std::string& header) {
  std::string slots;
  const std::string text = textOf(kProject / "host" / header);
  const std::regex expression(R"(virtual [^;~\n(]*?(\w+)\()");
  for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end;
       ++match) {
    slots += (slots.empty() ? "" : ", ") + (*match)[1].str();
  }
  return slots;
}

TEST(PagesTest, TheSlotsOfTheHostPageAreThoseOfTheHeaders) {
  const std::string page =
      std::regex_replace(textOf(kProject / "docs/hosting.md"), std::regex("\n +"), " ");
  for (const char* name : {"KPIM/Plugin", "KPB/DownloadInterface", "KPB/DownloadCallback",
                           "VeskPlayerX/DownloadManagerInterface", "VeskPlayerX/ShutdownInterface",
                           "VeskPlayerX/DownloadManagerViewInterface",
                           "VeskPlayerX/ZPSServicesInterface", "VeskPlayerX/PlayerInterface"}) {
    const std::string interface = fs::path(name).filename();
    const std::string slots = slotsOf(std::string(name) + ".h");
    const bool isListed = page.find("- `" + interface + "`: " + slots + "\n") != std::string::npos;
    EXPECT_TRUE(isListed) << interface << ": " << slots;
  }
}

TEST(PagesTest, TheLatestReleaseIsTheVersionOfTheProject) {
  const std::regex heading(R"(\n## ([0-9.]+) \(([0-9-]+)\))");
  const std::string changes = textOf(kProject / "CHANGELOG.md");
  std::smatch latest;
  ASSERT_TRUE(std::regex_search(changes, latest, heading));
  EXPECT_EQ(latest[1], VESK_VERSION);
  EXPECT_THAT(textOf(kProject / "packaging/desktop/com.vesk.playerx.metainfo.xml"),
              testing::HasSubstr("<releases>\n    <release version=\"" + latest[1].str() +
                                 "\" date=\"" + latest[2].str() + "\"/>"));
}

}  // namespace
