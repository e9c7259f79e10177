// The examples of the pages on formats and commands, read as they stand there.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QProcess>
#include <QString>
#include <filesystem>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "item/DownloadItem.h"
#include "kvpm/StringTools.h"
#include "persistence/DownloadManagerPersistence.h"
#include "persistence/TicketParser.h"
#include "playerx/cli/Options.h"
#include "tests/support/TempDir.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const std::filesystem::path kDocs = VESK_PROJECT "/docs";

/// The code blocks of a page, in its order, without the line that opens and the one that closes.
std::vector<std::string> blocksOf(const std::string& page) {
  const std::string text = support::readFile(kDocs / page);
  const std::regex block("```[a-z]*\n([^`]*)```");
  std::vector<std::string> blocks;
  for (std::sregex_iterator match(text.begin(), text.end(), block), end; match != end; ++match) {
    blocks.push_back((*match)[1]);
  }
  return blocks;
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
  const std::regex attribute(" ([A-Za-z]+)=\"");
  const std::string first = file.substr(file.find("<DownloadItem"));
  for (std::sregex_iterator match(first.begin(), first.end(), attribute), end; match != end;
       ++match) {
    EXPECT_THAT(page, HasSubstr("\n| `" + (*match)[1].str() + "` |"));
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

bool isUnderstood(const std::string& line) {
  std::vector<std::string> words;
  for (const QString& word : QProcess::splitCommand(QString::fromStdString(line))) {
    words.push_back(word.toStdString());
  }
  std::vector<const char*> arguments;
  for (const std::string& word : words) arguments.push_back(word.c_str());
  int status = -1;
  return playerx::cli::parseOptions(static_cast<int>(arguments.size()), arguments.data(), &status)
      .has_value();
}

TEST(CommandLinePage, EachCommandOfAPageIsUnderstood) {
  for (const char* page : {"cli.md", "../README.md"}) {
    int commands = 0;
    for (const std::string& block : blocksOf(page)) {
      const std::regex command("playerx-cli [^#\n]*");
      for (std::sregex_iterator match(block.begin(), block.end(), command), end; match != end;
           ++match, ++commands) {
        EXPECT_TRUE(isUnderstood(match->str())) << match->str();
      }
    }
    EXPECT_GT(commands, 3) << page;
  }
}

TEST(CommandLinePage, EachOptionOfTheProgramIsInThePage) {
  const std::string page = support::readFile(kDocs / "cli.md");
  const std::regex option("(--[a-z][a-z-]*)");
  for (const std::string& help : {helpOf({}), helpOf({"get"}), helpOf({"add"}), helpOf({"list"}),
                                  helpOf({"remove"}), helpOf({"clean"})}) {
    EXPECT_FALSE(help.empty());
    for (std::sregex_iterator match(help.begin(), help.end(), option), end; match != end; ++match) {
      EXPECT_THAT(page, HasSubstr("`" + (*match)[1].str()));
    }
  }
}

TEST(CommandLinePage, TheFileTypesAreInTheReadme) {
  const std::string readme = support::readFile(kDocs / "../README.md");
  for (const char* type : {"`.vesk`", "`.xvid`", "`.avi`", "`.mkv`"}) {
    EXPECT_THAT(readme, HasSubstr(type));
  }
}

TEST(CommandLinePage, EachCommandOfTheProgramIsInThePage) {
  const std::string page = support::readFile(kDocs / "cli.md");
  const std::string help = helpOf({});
  const std::regex command("\n  ([a-z]+) {2,}[A-Z]");
  const std::string commands = help.substr(help.find("Commands:"));
  for (std::sregex_iterator match(commands.begin(), commands.end(), command), end; match != end;
       ++match) {
    EXPECT_THAT(page, testing::ContainsRegex("\n[|][^|]*`" + (*match)[1].str() + "`"));
  }
}

}  // namespace
