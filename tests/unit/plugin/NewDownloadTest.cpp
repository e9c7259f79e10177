#include <gtest/gtest.h>

#include "plugin/NewDownload.h"

namespace plugin {
namespace {

TEST(NewDownload, IsTitledAfterItsFileAndProvidedByItsHost) {
  const auto item = makeDownload(L"http://films.example/dir/movie.AVI", L"", L"");
  ASSERT_NE(item, nullptr);
  EXPECT_EQ(item->getTitle(), L"movie.AVI");
  EXPECT_EQ(item->getContentProviderDisplayName(), L"films.example");
  EXPECT_EQ(item->getUrl(), L"http://films.example/dir/movie.AVI");
}

TEST(NewDownload, KeepsTheTitleAndTheProviderThatAreGiven) {
  const auto item = makeDownload(L"http://h/movie.avi", L"Title", L"Provider");
  ASSERT_NE(item, nullptr);
  EXPECT_EQ(item->getTitle(), L"Title");
  EXPECT_EQ(item->getContentProviderDisplayName(), L"Provider");
}

TEST(NewDownload, IsQueuedAndNotProtected) {
  const auto item = makeDownload(L"http://h/movie.avi", L"", L"");
  ASSERT_NE(item, nullptr);
  EXPECT_EQ(item->getStatus(), DownloadStatusQueued);
  EXPECT_FALSE(item->getEncrypted());
  EXPECT_EQ(item->getPercentDownloaded(), 0);
  EXPECT_EQ(item->getPath(), L"");
}

TEST(NewDownload, TakesEachTypeInAnyCase) {
  for (const wchar_t* const url : {L"http://h/a.vesk", L"http://h/a.xvid", L"http://h/a.avi",
                                   L"http://h/a.mkv", L"http://h/a.VESK", L"http://h/a.MkV"}) {
    EXPECT_NE(makeDownload(url, L"", L""), nullptr) << url;
  }
}

TEST(NewDownload, IsNothingForAnyOtherType) {
  for (const wchar_t* const url :
       {L"http://h/a.txt", L"http://h/a", L"http://h/", L"http://h/avi", L"http://h/a.avi.txt",
        L"http://h/a.avi2", L"http://h/.avi/x", L"", L"http://h/a.", L"http://h/x?y=a.avi"}) {
    EXPECT_EQ(makeDownload(url, L"", L""), nullptr) << url;
  }
}

TEST(NewDownload, SeesTheTypeBeforeAQuery) {
  const auto item = makeDownload(L"http://h/film.avi?token=1", L"", L"");
  ASSERT_NE(item, nullptr);
  EXPECT_EQ(item->getTitle(), L"film.avi");
  EXPECT_EQ(item->getUrl(), L"http://h/film.avi?token=1");
}

TEST(NewDownload, EscapesTheAddressButNotTheTitle) {
  const auto item = makeDownload(L"http://h/a b{c}.avi", L"", L"");
  ASSERT_NE(item, nullptr);
  EXPECT_EQ(item->getUrl(), L"http://h/a%20b%7Bc%7D.avi");
  EXPECT_EQ(item->getTitle(), L"a b{c}.avi");
}

TEST(NewDownload, TakesTheProviderFromTheEscapedAddress) {
  EXPECT_EQ(makeDownload(L"http://a b/movie.avi", L"", L"")->getContentProviderDisplayName(),
            L"a%20b");
  EXPECT_EQ(makeDownload(L"http://h{x}/a.avi", L"", L"")->getContentProviderDisplayName(),
            L"h%7Bx%7D");
}

TEST(NewDownload, LeavesTheProviderEmptyWhenTheAddressNamesNoHost) {
  for (const wchar_t* const url : {L"ftp://h/a.avi", L"/films/a.avi", L"http:a.avi", L"a.avi"}) {
    const auto item = makeDownload(url, L"", L"");
    ASSERT_NE(item, nullptr) << url;
    EXPECT_EQ(item->getContentProviderDisplayName(), L"") << url;
  }
}

TEST(NewDownload, LeavesThePortOutOfTheProvider) {
  const auto item = makeDownload(L"https://films.example:8443/a.avi", L"", L"");
  ASSERT_NE(item, nullptr);
  EXPECT_EQ(item->getContentProviderDisplayName(), L"films.example");
}

TEST(NewDownload, CarriesAnyText) {
  const auto item = makeDownload(L"http://h/\x65E5\x1F600.avi", L"\x1F600", L"\x65E5");
  ASSERT_NE(item, nullptr);
  EXPECT_EQ(item->getUrl(), L"http://h/\x65E5\x1F600.avi");
  EXPECT_EQ(item->getTitle(), L"\x1F600");
  EXPECT_EQ(item->getContentProviderDisplayName(), L"\x65E5");
}

}  // namespace
}  // namespace plugin
