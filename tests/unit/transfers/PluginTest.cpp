#include <gtest/gtest.h>

#include "KPB/DownloadInterface.h"
#include "KPIM/Context.h"
#include "KPIM/Helper.h"
#include "KPIM/PluginInfo.h"
#include "playerx/framework/PluginContext.h"
#include "playerx/transfers/TransferReports.h"
#include "playerx/transfers/TransferSettings.h"
#include "tests/unit/transfers/DownloadsFixture.h"

namespace playerx::transfers {
namespace {

using Filter = KPIM::Context::PluginInterfaceFilter;
using Selector = KPIM::Context::SimplePluginInfoSelector;

class PluginTest : public DownloadsFixture {
 protected:
  PluginContext context_{{std::filesystem::path(VESK_PLUGIN_FOLDER)}};
};

TEST_F(PluginTest, ThePlayersContextFindsItAndAFilmArrives) {
  FilmServer server(filmOf(100'000));
  KPIM::Helper<KPB::DownloadInterface> library(KPB::DIN_Download);
  ASSERT_EQ(library.loadPlugin(&context_, Filter(KPB::DIN_Download), Selector(), true), 0);
  library->setCallback(&receiver_);
  unsigned long long uid = 0;
  ASSERT_EQ(library->startSession(server.url(), info(), &uid), 1);
  EXPECT_TRUE(receiver_.waitForEnd(uid));
  EXPECT_EQ(film(), filmBytes(100'000));
  library->setCallback(nullptr);
}

TEST_F(PluginTest, ItsReportsAndSettingsAreFoundByTheirOwnIds) {
  KPIM::Helper<TransferReports> reports(DIN_TransferReports);
  ASSERT_EQ(reports.loadPlugin(&context_, Filter(DIN_TransferReports), Selector(), true), 0);
  TransferReport report;
  EXPECT_FALSE(reports->findByAddress("http://localhost/", &report));
  KPIM::Helper<TransferSettings> settings(DIN_TransferSettings);
  ASSERT_EQ(settings.loadPlugin(&context_, Filter(DIN_TransferSettings), Selector(), true), 0);
  settings->setTrustFile("");
}

TEST_F(PluginTest, AllItsFacesAreOfOneLibrary) {
  KPIM::Helper<KPB::DownloadInterface> library(KPB::DIN_Download);
  KPIM::Helper<TransferReports> reports(DIN_TransferReports);
  ASSERT_EQ(library.loadPlugin(&context_, Filter(KPB::DIN_Download), Selector(), true), 0);
  ASSERT_EQ(reports.loadPlugin(&context_, Filter(DIN_TransferReports), Selector(), true), 0);
  unsigned long long uid = 0;
  EXPECT_NE(library->startSession("nonsense", info(), &uid), 1);
  TransferReport report;
  EXPECT_TRUE(reports->findByAddress("nonsense", &report));
}

TEST_F(PluginTest, AnUnknownFaceIsRefused) {
  KPIM::Plugin* plugin = nullptr;
  ASSERT_EQ(context_.getPluginInstance(Filter(KPB::DIN_Download), Selector(), true, &plugin), 0);
  void* face = nullptr;
  EXPECT_EQ(plugin->kpimGetInterface("com.vesk.unknown", &face), KPIM::kUnknownInterface);
  EXPECT_EQ(face, nullptr);
  EXPECT_EQ(plugin->kpimGetPluginInfo()->id, "com.vesk.playback.plugin.Download");
  EXPECT_EQ(plugin->kpimGetPluginContext(), &context_);
  plugin->kpimRelease();
}

class ReportsTest : public DownloadsFixture {};

TEST_F(ReportsTest, ASessionIsFoundByAddressAndPath) {
  FilmServer server(filmOf(100'000));
  server.stallNext(50'000);
  const auto uid = start(server.url());
  ASSERT_TRUE(receiver_.waitForPercent(uid, 50));
  TransferReport byAddress, byPath;
  ASSERT_TRUE(downloads_->reports().findByAddress(server.url(), &byAddress));
  ASSERT_TRUE(downloads_->reports().findByPath(movies() / "film.avi", &byPath));
  for (const TransferReport& one : {byAddress, byPath}) {
    EXPECT_EQ(one.uid, uid);
    EXPECT_EQ(one.address, server.url());
    EXPECT_EQ(one.requestedPath, (movies() / "film.avi").string());
    EXPECT_EQ(one.phase, TransferPhase::kArriving);
    EXPECT_GE(one.arrived, 50'000u);
    EXPECT_EQ(one.total, 100'000u);
    EXPECT_GE(std::filesystem::file_size(one.partialPath), 50'000u);
    EXPECT_EQ(one.finalPath, "");
    EXPECT_EQ(one.failure, TransferFailure::kNone);
  }
}

TEST_F(ReportsTest, TheLatestOfAnAddressIsFound) {
  FilmServer server(filmOf(10));
  fetch(server.url(), "a.avi");
  fetch(server.url(), "b.avi");
  TransferReport report;
  ASSERT_TRUE(downloads_->reports().findByAddress(server.url(), &report));
  EXPECT_EQ(report.requestedPath, (movies() / "b.avi").string());
}

TEST_F(ReportsTest, WhatIsNotKnownLeavesTheReportAlone) {
  TransferReport report;
  report.detail = "untouched";
  EXPECT_FALSE(downloads_->reports().findByAddress("http://localhost/", &report));
  EXPECT_FALSE(downloads_->reports().findByPath("", &report));
  EXPECT_EQ(report.detail, "untouched");
}

TEST_F(ReportsTest, ManySessionsAreForgottenInTheirOrder) {
  unsigned long long uid = 0;
  for (int i = 0; i < 1000; ++i) {
    downloads_->startSession("ftp://h/" + std::to_string(i), info(), &uid);
  }
  TransferReport report;
  EXPECT_FALSE(downloads_->reports().findByAddress("ftp://h/0", &report));
  EXPECT_TRUE(downloads_->reports().findByAddress("ftp://h/999", &report));
}

TEST_F(ReportsTest, ABrokenSessionTellsItsReason) {
  FilmServer server(filmOf(10));
  server.answerNext("HTTP/1.1 404 No\r\nContent-Length: 0\r\n\r\n");
  const auto uid = start(server.url());
  ASSERT_TRUE(receiver_.waitForEnd(uid));
  EXPECT_EQ(report(uid).phase, TransferPhase::kBroken);
  EXPECT_EQ(report(uid).failure, failureOfStatus(404));
  EXPECT_EQ(report(uid).detail, "status 404");
}

TEST_F(ReportsTest, TheBytesAreToldWhileTheyCome) {
  support::Gate gate;
  FilmServer server(filmOf(1'000'000));
  server.holdNext(500'000, gate);
  const auto uid = start(server.url());
  ASSERT_TRUE(receiver_.waitForPercent(uid, 50));
  EXPECT_EQ(report(uid).arrived, 500'000u);
  gate.open();
  ASSERT_TRUE(receiver_.waitForEnd(uid));
  EXPECT_EQ(report(uid).arrived, 1'000'000u);
}

}  // namespace
}  // namespace playerx::transfers
