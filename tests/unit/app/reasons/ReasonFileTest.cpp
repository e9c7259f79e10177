#include <gtest/gtest.h>

#include "playerx/app/reasons/ReasonFile.h"
#include "tests/support/TempDir.h"

namespace playerx::reasons {
namespace {

using model::ItemState;

class ReasonFileTest : public testing::Test {
 protected:
  static ItemState failed(const std::string& url) {
    ItemState item;
    item.url = url;
    item.status = DownloadStatusFailed;
    return item;
  }

  void keep(const ItemState& item, const std::vector<ItemState>& queue) {
    ReasonFile file(folder_.path());
    file.note(item, kReason);
    file.save(queue);
  }

  std::optional<Explanation> find(const ItemState& item) {
    return ReasonFile(folder_.path()).find(item);
  }

  const Explanation kReason = explain(reasonOfStatus(404), {.host = "h"});
  const ItemState first_ = failed("http://h/a.avi");
  const ItemState second_ = failed("http://h/b.avi");
  support::TempDir folder_;
};

TEST_F(ReasonFileTest, AReasonIsThereInTheNextRun) {
  EXPECT_EQ(find(first_), std::nullopt);
  keep(first_, {first_});
  EXPECT_EQ(find(first_), kReason);
  EXPECT_EQ(find(second_), std::nullopt);
}

TEST_F(ReasonFileTest, AnItemThatIsRetriedHasNoReason) {
  keep(first_, {first_});
  ItemState retried = first_;
  retried.status = DownloadStatusQueued;
  EXPECT_EQ(find(retried), std::nullopt);
  keep(second_, {retried, second_});
  EXPECT_EQ(find(first_), std::nullopt);
  EXPECT_EQ(find(second_), kReason);
}

TEST_F(ReasonFileTest, OnlyTheOwnerCanReadTheFile) {
  using std::filesystem::perms;
  keep(first_, {first_});
  EXPECT_EQ(std::filesystem::status(folder_ / "failures.json").permissions(),
            perms::owner_read | perms::owner_write);
}

TEST_F(ReasonFileTest, NoPasswordIsKept) {
  const ItemState named = failed("http://user:word@h/a.avi");
  keep(named, {named});
  EXPECT_EQ(support::readFile(folder_ / "failures.json").find("word"), std::string::npos);
  EXPECT_EQ(find(first_), kReason);
}

TEST_F(ReasonFileTest, GarbageCountsAsEmpty) {
  for (const char* text :
       {"", "\xFF\xFE", "{", "[1, null, {}, {\"item\": 3, \"reason\": \"x\"}]",
        "[{\"item\":\"http://h/a.avi\",\"reason\":1e99,\"happened\":7}]", "{\"a\":[]}"}) {
    folder_.write("failures.json", text);
    EXPECT_EQ(find(first_), std::nullopt) << text;
    keep(first_, {first_});
    EXPECT_EQ(find(first_), kReason) << text;
  }
}

TEST_F(ReasonFileTest, AFileThatCannotBeWrittenIsNoFailure) {
  std::filesystem::create_directory(folder_ / "failures.json");
  keep(first_, {first_});
  EXPECT_EQ(find(first_), std::nullopt);
}

}  // namespace
}  // namespace playerx::reasons
