#include <gtest/gtest.h>

#include "playerx/window/queue/QueuePlaces.h"
#include "tests/unit/window/OwnSettings.h"

namespace playerx::window {
namespace {

/// Preferences in the test's own file, in an environment that names a proxy.
class QueuePlacesTest : public testing::Test {
 protected:
  QueuePlacesTest() {
    qputenv("http_proxy", "http://of.the.system:1");
    qputenv("all_proxy", "http://of.the.system:2");
  }

  ~QueuePlacesTest() override {
    for (const char* const name : {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy"}) {
      qunsetenv(name);
    }
  }

  static QByteArray proxyAfter(QueuePreferences::Proxy proxy, const QString& address = {}) {
    QueuePreferences preferences = storedPreferences();
    preferences.proxy = proxy;
    preferences.proxyAddress = address;
    storePreferences(preferences);
    useStoredProxy();
    return qgetenv("http_proxy") + ' ' + qgetenv("all_proxy");
  }

  OwnSettings settings_;
};

TEST_F(QueuePlacesTest, WhatIsStoredIsReadAgain) {
  QueuePreferences preferences = storedPreferences();
  preferences.mediaFolder = QStringLiteral("/films");
  preferences.proxy = QueuePreferences::kOwnProxy;
  preferences.proxyAddress = QStringLiteral("http://p:1");
  preferences.speedLimit = 2'000'000;
  preferences.authorityFile = QStringLiteral("/ca.pem");
  preferences.servicesAddress = QStringLiteral("https://s");
  storePreferences(preferences);
  EXPECT_EQ(storedPreferences(), preferences);
  QueuePreferences plain;
  plain.mediaFolder = QStringLiteral("/films");
  storePreferences(plain);
  EXPECT_EQ(storedPreferences(), plain);
}

TEST_F(QueuePlacesTest, TheSystemsProxyIsLeftAlone) {
  EXPECT_EQ(proxyAfter(QueuePreferences::kSystemProxy),
            "http://of.the.system:1 http://of.the.system:2");
}

TEST_F(QueuePlacesTest, NoProxyIsNone) {
  EXPECT_EQ(proxyAfter(QueuePreferences::kNoProxy).trimmed(), "");
}

TEST_F(QueuePlacesTest, AnOwnProxyTakesThePlaceOfTheSystems) {
  EXPECT_EQ(proxyAfter(QueuePreferences::kOwnProxy, QStringLiteral("http://p:1")).trimmed(),
            "http://p:1");
}

}  // namespace
}  // namespace playerx::window
