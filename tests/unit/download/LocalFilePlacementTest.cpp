#include <gtest/gtest.h>

#include <QSettings>
#include <set>
#include <utility>

#include "KPX/KPXPreferences.h"
#include "download/HttpDownloadThreadImpl.h"
#include "download/LocalFilePlacement.h"
#include "tests/support/TempDir.h"

namespace download {
namespace {

Exists among(std::set<std::wstring> paths) {
  return [paths = std::move(paths)](const std::wstring& path) { return paths.contains(path); };
}

TEST(LocalFilePlacement, TakesTheLastPartOfTheAddress) {
  const struct {
    const char* url;
    const wchar_t* name;
  } table[] = {{"http://h/dir/movie.vesk?token=1", L"movie.vesk"},
               {"http://h/dir/movie.vesk", L"movie.vesk"},
               {"http://h/", L"Unknown.vesk"},
               {"http://h/?token=1", L"Unknown.vesk"},
               {"movie.vesk", L"movie.vesk"},
               {"", L"Unknown.vesk"},
               {"http://h/a%20b.vesk", L"a b.vesk"},
               {"http://h/a%2Fb.vesk", L"a%2Fb.vesk"},
               {"http://h/a.vesk?x?y", L"a.vesk"},
               {"http://h/a.vesk?path=/x/y", L"y"},
               {"http://h/\xC3\xA4.vesk", L"\u00e4.vesk"},
               {"http://h/movie.vesk#t=1", L"movie.vesk#t=1"},
               {"http://h/a%23b.vesk", L"a#b.vesk"},
               {"http://h/a%3cb%41.vesk", L"a%3cb%41.vesk"},
               {"http://h/\xFF.vesk", L"\uFFFD.vesk"},
               {"?x", L"Unknown.vesk"},
               {"http://h/..?x", L"Unknown.vesk"},
               {"http://h/..", L"Unknown.vesk"},
               {"http://h/.", L"Unknown.vesk"}};
  for (const auto& row : table) EXPECT_EQ(mediaFileName(row.url), row.name) << row.url;
}

TEST(LocalFilePlacement, KeepsAFreeName) {
  EXPECT_EQ(freePathIn(L"/m/", L"movie.vesk", among({})), L"/m/movie.vesk");
  EXPECT_EQ(freePathLike(L"/m/movie.vesk", among({})), L"/m/movie.vesk");
}

TEST(LocalFilePlacement, CountsFromOneInTheMediaFolder) {
  EXPECT_EQ(freePathIn(L"/m/", L"movie.vesk", among({L"/m/movie.vesk"})), L"/m/movie[1].vesk");
  EXPECT_EQ(freePathIn(L"/m/", L"movie.vesk", among({L"/m/movie.vesk", L"/m/movie[1].vesk"})),
            L"/m/movie[2].vesk");
}

TEST(LocalFilePlacement, CountsFromTwoForAPathThatIsTaken) {
  EXPECT_EQ(freePathLike(L"/m/movie.vesk", among({L"/m/movie.vesk"})), L"/m/movie[2].vesk");
  EXPECT_EQ(freePathLike(L"/m/movie.vesk", among({L"/m/movie.vesk", L"/m/movie[2].vesk"})),
            L"/m/movie[3].vesk");
}

TEST(LocalFilePlacement, WritesNumbersInDecimal) {
  std::set<std::wstring> taken{L"/m/a.b.vesk"};
  for (int number = 1; number < 12; ++number) {
    taken.insert(L"/m/a.b[" + std::to_wstring(number) + L"].vesk");
  }
  EXPECT_EQ(freePathIn(L"/m/", L"a.b.vesk", among(taken)), L"/m/a.b[12].vesk");
}

TEST(LocalFilePlacement, PutsTheNumberBeforeADotWhereverItIs) {
  EXPECT_EQ(freePathIn(L"/m/", L".vesk", among({L"/m/.vesk"})), L"/m/[1].vesk");
  EXPECT_EQ(freePathIn(L"/m/", L"movie.", among({L"/m/movie."})), L"/m/movie[1].");
}

TEST(LocalFilePlacement, PutsTheNumberBehindANameWithoutDot) {
  EXPECT_EQ(freePathIn(L"/m/", L"movie", among({L"/m/movie"})), L"/m/movie[1]");
  EXPECT_EQ(freePathIn(L"/m.d/", L"movie", among({L"/m.d/movie"})), L"/m.d/movie[1]");
  EXPECT_EQ(freePathLike(L"/m.d/movie", among({L"/m.d/movie"})), L"/m.d/movie[2]");
}

class PlacementInAFolder : public testing::Test {
 protected:
  PlacementInAFolder() {
    KPXPreferences::userSettings = new QSettings(
        QString::fromStdString((dir_ / "settings.ini").string()), QSettings::IniFormat);
    KPXPreferences::userSettings->setValue("General/MediaFolder",
                                           QString::fromStdString(dir_.path().string()));
  }
  ~PlacementInAFolder() override { delete std::exchange(KPXPreferences::userSettings, nullptr); }

  static std::wstring place(const std::string& url) {
    return HttpDownloadThread::HttpDownloadThreadImpl::getLocalFilePath(url);
  }

  support::TempDir dir_;
};

TEST_F(PlacementInAFolder, UsesTheMediaFolder) {
  EXPECT_EQ(place("http://h/dir/movie.vesk?token=1"), (dir_ / "movie.vesk").wstring());
}

TEST_F(PlacementInAFolder, AvoidsFilesThatExist) {
  dir_.write("movie.vesk", "x");
  dir_.write("movie[1].vesk", "x");
  EXPECT_EQ(place("http://h/movie.vesk"), (dir_ / "movie[2].vesk").wstring());
}

TEST_F(PlacementInAFolder, NumbersTheUnknownToo) {
  dir_.write("Unknown.vesk", "x");
  EXPECT_EQ(place("http://h/"), (dir_ / "Unknown[1].vesk").wstring());
}

TEST_F(PlacementInAFolder, PutsASeparatorBehindAFolderThatEndsInOne) {
  const std::wstring folder = dir_.path().wstring() + L"/";
  KPXPreferences::userSettings->setValue("General/MediaFolder", QString::fromStdWString(folder));
  EXPECT_EQ(place("http://h/movie.vesk"), folder + L"/movie.vesk");
}

TEST_F(PlacementInAFolder, UsesTheDefaultFolderWithoutSettings) {
  delete std::exchange(KPXPreferences::userSettings, nullptr);
  const std::string name = dir_.path().filename().string() + ".vesk";  // nobody else's
  EXPECT_EQ(place("http://h/" + name), KPXPreferences::MediaFolder_DEFAULT.toStdWString() + L"/" +
                                           std::wstring(name.begin(), name.end()));
}

TEST_F(PlacementInAFolder, UsesTheDefaultFolderWithoutAPreference) {
  KPXPreferences::userSettings->setValue("General/MediaFolder", "");
  EXPECT_EQ(mediaFolder(), KPXPreferences::MediaFolder_DEFAULT);
  delete std::exchange(KPXPreferences::userSettings, nullptr);
  EXPECT_EQ(mediaFolder(), KPXPreferences::MediaFolder_DEFAULT);
}

}  // namespace
}  // namespace download
