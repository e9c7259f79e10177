// The examples of the pages on formats and commands, read as they stand there.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QProcess>
#include <QString>
#include <filesystem>
#include <memory>
#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "item/DownloadItem.h"
#include "kvpm/StringTools.h"
#include "persistence/DownloadManagerPersistence.h"
#include "persistence/TicketParser.h"
#include "playerx/app/door/Protocol.h"
#include "playerx/cli/Options.h"
#include "tests/support/TempDir.h"

namespace {

using testing::ElementsAre;

const std::filesystem::path kDocs = VESK_PROJECT "/docs";

/// What `expression` finds in a text: of each match the group of this number.
std::vector<std::string> findAll(const std::string& text, const std::string& expression,
                                 int group = 1) {
  std::vector<std::string> found;
  const std::regex pattern(expression);
  for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match) {
    found.push_back((*match)[static_cast<std::size_t>(group)]);
  }
  return found;
}

/// Whether a page holds these words; it is too long to be printed by a failure.
bool holds(const std::string& page, const std::string& words) {
  return page.find(words) != std::string::npos;
}

/// The code blocks of a page, in its order, without the line that opens and the one that closes.
std::vector<std::string> blocksOf(const std::string& page) {
  return findAll(support::readFile(kDocs / page), "```[a-z]*\n([^`]*)```");
}

/// Items that a reader of files has found; deletes them.
class Items {
 public:
  explicit Items(std::vector<VeskPlayerX::DownloadItemInterface*> items)
      : pointers(std::move(items)) {
    for (auto* item : pointers) owned_.emplace_back(item);
  }

  std::vector<std::string> titles() const {
    std::vector<std::string> titles;
    for (const auto* item : pointers) {
      titles.push_back(kvpm::StringTools::wStringToString(item->getTitle()));
    }
    return titles;
  }

  const std::vector<VeskPlayerX::DownloadItemInterface*> pointers;

 private:
  std::vector<std::unique_ptr<VeskPlayerX::DownloadItemInterface>> owned_;
};

class FormatsTest : public testing::Test {
 protected:
  Items queueOf(const std::string& content) const {
    return Items(DownloadManagerPersistence::readDownloadQueue(
        folder_.write("queue.xml", content).wstring()));
  }

  std::string written(const Items& items) const {
    const std::filesystem::path file = folder_ / "written.xml";
    DownloadManagerPersistence::writeDownloadQueue(file.wstring(), items.pointers);
    return support::readFile(file);
  }

  Items filmsOf(const std::string& ticket) const {
    return Items(TicketParser::parseClearTicket(folder_.write("film.tix", ticket).wstring()));
  }

  support::TempDir folder_;
};

/// The file without the line breaks that the page has for its reader.
std::string joined(const std::string& example) {
  const std::size_t declaration = example.find('\n') + 1;
  std::string body = std::regex_replace(example.substr(declaration), std::regex("\n +"), " ");
  body = std::regex_replace(body, std::regex("\n"), "");
  return example.substr(0, declaration) + body + "\n";
}

TEST_F(FormatsTest, TheQueueOfThePageIsReadThenWrittenByteForByte) {
  const std::string example = blocksOf("queue-file.md").at(0);
  const Items items = queueOf(example);
  EXPECT_THAT(items.titles(), ElementsAre("Game of Life", "Automaton"));
  EXPECT_EQ(written(items), joined(example));
}

TEST_F(FormatsTest, TheQueueOfThePageHasTheFieldsThatThePageNames) {
  const Items items = queueOf(blocksOf("queue-file.md").at(0));
  ASSERT_EQ(items.pointers.size(), 2U);
  EXPECT_EQ(items.pointers[0]->getStatus(), DownloadStatusDownloading);
  EXPECT_EQ(items.pointers[0]->getPercentDownloaded(), 40);
  EXPECT_EQ(items.pointers[1]->getContentEncryptionUsageId(), -1);
  EXPECT_EQ(items.pointers[1]->getTicket(), "3f9a-\"opaque\"");
  EXPECT_TRUE(items.pointers[1]->getEncrypted());
}

TEST_F(FormatsTest, EachAttributeThatIsWrittenIsInTheTableOfThePage) {
  const std::string page = support::readFile(kDocs / "queue-file.md");
  const std::string file = written(queueOf(blocksOf("queue-file.md").at(0)));
  const std::vector<std::string> attributes =
      findAll(file.substr(file.find("<DownloadItem")), " ([A-Za-z]+)=\"");
  EXPECT_GT(attributes.size(), 10U);
  for (const std::string& attribute : attributes) {
    EXPECT_TRUE(holds(page, "\n| `" + attribute + "` |")) << attribute;
  }
}

TEST_F(FormatsTest, TheEarlierQueueOfThePageIsRead) {
  const Items items = queueOf(blocksOf("queue-file.md").at(1));
  EXPECT_THAT(items.titles(), ElementsAre("One"));
  EXPECT_EQ(items.pointers.at(0)->getUrl(), L"http://films.example/one.avi");
}

TEST_F(FormatsTest, TheTicketOfThePageNamesTheFilmsThatThePageSays) {
  const Items films = filmsOf(blocksOf("tickets.md").at(0));
  EXPECT_THAT(films.titles(), ElementsAre("Game of Life", "one.avi"));
  EXPECT_EQ(films.pointers.at(0)->getContentProviderDisplayName(), L"Films & Co");
  EXPECT_EQ(films.pointers.at(1)->getContentProviderDisplayName(), L"films.example");
  EXPECT_EQ(films.pointers.at(1)->getUrl(), L"https://films.example/one.avi?session=a=b");
}

/// What the program says of itself: its help, or that of one of its commands.
std::string helpOf(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "playerx-cli");
  arguments.push_back("--help");
  int status = -1;
  testing::internal::CaptureStdout();
  playerx::cli::parseOptions(static_cast<int>(arguments.size()), arguments.data(), &status);
  return testing::internal::GetCapturedStdout();
}

std::optional<playerx::cli::Options> parse(const std::string& line) {
  std::vector<std::string> words;
  for (const QString& word : QProcess::splitCommand(QString::fromStdString(line))) {
    words.push_back(word.toStdString());
  }
  std::vector<const char*> arguments;
  for (const std::string& word : words) arguments.push_back(word.c_str());
  int status = -1;
  return playerx::cli::parseOptions(static_cast<int>(arguments.size()), arguments.data(), &status);
}

/// The command lines in the code blocks of a page.
std::vector<std::string> commandLinesOf(const std::string& page) {
  std::vector<std::string> lines;
  for (const std::string& block : blocksOf(page)) {
    for (std::string& line : findAll(block, "playerx-cli [^#\n]*", 0)) lines.push_back(line);
  }
  return lines;
}

/// The names of all commands.
std::vector<std::string> commands() {
  const std::string help = helpOf({});
  return findAll(help.substr(help.find("\nCommands:")), "\n  ([a-z]+) {2,}[A-Z]");
}

TEST(CommandLinePage, EachCommandOfAPageIsUnderstood) {
  for (const char* page : {"cli.md", "../README.md"}) {
    const std::vector<std::string> lines = commandLinesOf(page);
    EXPECT_GT(lines.size(), 3U) << page;
    for (const std::string& line : lines) EXPECT_TRUE(parse(line)) << line;
  }
}

TEST(CommandLinePage, EachCommandIsTakenByAProcessThatHasTheQueueAsItWasGiven) {
  const std::string page = support::readFile(kDocs / "queue-protocol.md");
  for (const std::string& line : commandLinesOf("cli.md")) {
    const auto options = parse(line);
    if (!options || options->command != playerx::cli::Options::kRequest) continue;
    const QByteArray sent = playerx::door::write(options->request);
    EXPECT_EQ(playerx::door::readRequest(sent), options->request) << line;
    for (const std::string& word : findAll(sent.toStdString(), "\"action\":\"([a-z]+)\"")) {
      EXPECT_TRUE(holds(page, "`" + word + "`")) << word;
    }
  }
}

TEST(CommandLinePage, EachOptionOfTheProgramIsInThePage) {
  const std::string page = support::readFile(kDocs / "cli.md");
  std::string help = helpOf({});
  for (const std::string& command : commands()) help += helpOf({command.c_str()});
  for (const std::string& option : findAll(help, "(--[a-z][a-z-]*)")) {
    EXPECT_TRUE(holds(page, "`" + option)) << option;
  }
}

TEST(CommandLinePage, EachCommandOfTheProgramIsInThePageWithAnExample) {
  const std::string page = support::readFile(kDocs / "cli.md");
  EXPECT_GT(commands().size(), 10U);
  for (const std::string& command : commands()) {
    EXPECT_FALSE(findAll(page, "\n[|]([^|]*`" + command + "`)").empty()) << command;
    EXPECT_FALSE(findAll(page, "\nplayerx-cli ((--[a-z]+ )*" + command + ")").empty())
        << "no example of " << command;
  }
}

}  // namespace
