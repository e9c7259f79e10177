#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <utility>

#include "plugin/DownloadQueue.h"
#include "tests/unit/plugin/QueueText.h"

namespace plugin {
namespace {

/// An item that counts how often its queue looks at it.
struct Watched : DownloadItem {
  unsigned int getId() const override {
    ++looks;
    return DownloadItem::getId();
  }
  const std::wstring& getUrl() const override {
    ++looks;
    return DownloadItem::getUrl();
  }

  mutable int looks = 0;
};

/// An item that cannot be indexed by its address while memory is short.
struct Unindexed : DownloadItem {
  const std::wstring& getUrl() const override {
    if (isMemoryShort) throw std::bad_alloc();
    return DownloadItem::getUrl();
  }

  bool isMemoryShort = true;
};

class QueueIndexTest : public ::testing::Test {
 protected:
  DownloadItem& add(const std::wstring& url) {
    auto item = std::make_unique<DownloadItem>();
    item->setUrl(url);
    DownloadItem& added = *item;
    queue_.add(std::move(item));
    return added;
  }

  DownloadQueue queue_;
};

TEST_F(QueueIndexTest, LooksAtNoOtherItem) {
  auto other = std::make_unique<Watched>();
  const Watched& watched = *other;
  queue_.add(std::move(other));
  const DownloadItem& wanted = add(L"http://h/wanted");
  const unsigned int id = wanted.getId();
  queue_.find(id);
  queue_.findUrl(L"http://h/wanted");
  watched.looks = 0;
  EXPECT_EQ(queue_.find(id), &wanted);
  EXPECT_EQ(queue_.find(id + 1), nullptr);
  EXPECT_EQ(queue_.findUrl(L"http://h/wanted"), &wanted);
  EXPECT_EQ(queue_.findUrl(L"http://h/unknown"), nullptr);
  EXPECT_EQ(watched.looks, 0);
}

TEST_F(QueueIndexTest, FindsItemsByWhatTheHostHasMadeOfThem) {
  DownloadItem& item = add(L"http://h/old");
  const unsigned int oldId = item.getId();
  ASSERT_EQ(queue_.findUrl(L"http://h/old"), &item);
  item.setUrl(L"http://h/new");
  item.setId(oldId + 1'000'000);
  EXPECT_EQ(queue_.findUrl(L"http://h/new"), &item);
  EXPECT_EQ(queue_.findUrl(L"http://h/old"), nullptr);
  EXPECT_EQ(queue_.find(oldId + 1'000'000), &item);
  EXPECT_EQ(queue_.find(oldId), nullptr);
}

TEST_F(QueueIndexTest, TheFirstOfSeveralWithOneKeyIsFoundWhateverTheirOrder) {
  DownloadItem& first = add(L"http://h/same");
  DownloadItem& second = add(L"http://h/another");
  second.setUrl(first.getUrl());
  second.setId(first.getId());
  EXPECT_EQ(queue_.findUrl(L"http://h/same"), &first);
  EXPECT_EQ(queue_.find(first.getId()), &first);
  queue_.moveToBottom(first.getId());
  EXPECT_EQ(queue_.findUrl(L"http://h/same"), &second);
  EXPECT_EQ(queue_.find(first.getId()), &second);
}

TEST_F(QueueIndexTest, TheOtherOfTwoWithOneKeyIsFoundOnceTheFirstIsRemoved) {
  const DownloadItem& first = add(L"http://h/same");
  const DownloadItem& second = add(L"http://h/same");
  ASSERT_EQ(queue_.findUrl(L"http://h/same"), &first);
  queue_.remove(first.getId());
  EXPECT_EQ(queue_.findUrl(L"http://h/same"), &second);
  queue_.remove(second.getId());
  EXPECT_EQ(queue_.findUrl(L"http://h/same"), nullptr);
}

TEST_F(QueueIndexTest, AnItemIsFoundThatCameWhileMemoryWasShort) {
  const DownloadItem& first = add(L"http://h/first");
  ASSERT_EQ(queue_.findUrl(L"http://h/first"), &first);
  auto item = std::make_unique<Unindexed>();
  item->setUrl(L"http://h/late");
  Unindexed& late = *item;
  queue_.add(std::move(item));
  late.isMemoryShort = false;
  EXPECT_EQ(queue_.findUrl(L"http://h/late"), &late);
  EXPECT_EQ(queue_.findUrl(L"http://h/first"), &first);
}

TEST_F(QueueIndexTest, WhatWasRemovedIsNotFound) {
  const unsigned int removed = add(L"http://h/removed").getId();
  add(L"http://h/complete").setStatus(DownloadStatusCompleted);
  const unsigned int replaced = add(L"http://h/replaced").getId();
  queue_.remove(removed);
  queue_.removeIf([](const auto& item) { return item.getStatus() == DownloadStatusCompleted; });
  EXPECT_EQ(queue_.find(removed), nullptr);
  EXPECT_EQ(queue_.findUrl(L"http://h/removed"), nullptr);
  EXPECT_EQ(queue_.findUrl(L"http://h/complete"), nullptr);
  queue_.assign({});
  EXPECT_EQ(queue_.find(replaced), nullptr);
}

TEST_F(QueueIndexTest, AnItemIsRemovedWhoseKeysHaveJustChanged) {
  DownloadItem& item = add(L"http://h/old");
  item.setStatus(DownloadStatusCompleted);
  item.setUrl(L"http://h/new");
  queue_.removeIf([](const auto&) { return true; });
  EXPECT_EQ(queue_.findUrl(L"http://h/old"), nullptr);
  EXPECT_EQ(queue_.findUrl(L"http://h/new"), nullptr);
}

}  // namespace
}  // namespace plugin
