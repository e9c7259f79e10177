#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>

#include "tests/soak/servers/Faults.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TestPki.h"
#include "tests/support/TinyProxy.h"
#include "tests/unit/transfers/DownloadsFixture.h"

namespace soak {
namespace {

using namespace playerx::transfers;
using playerx::TransferFailure;
using support::ScriptedServer;
namespace pki = support::pki;

constexpr int kPlain = 0;

/// A way to a server: the protocol, and whether a proxy lies on it.
struct Way {
  int protocol = kPlain;  ///< of TLS
  bool hasProxy = false;
};

/// What the environment says of proxies.
void nameProxy(const std::string& address) {
  for (const char* const name : {"http_proxy", "https_proxy", "no_proxy", "all_proxy"}) {
    ::unsetenv(name);
  }
  if (address.empty()) return;
  ::setenv("http_proxy", address.c_str(), 1);
  ::setenv("https_proxy", address.c_str(), 1);
}

class Servers : public DownloadsFixture {
 protected:
  /// The library as it is at the start of the player, with nothing of earlier films left. Its
  /// patience is short where it is to be tried, so that no busy machine tries it elsewhere.
  void beginAnew(bool isToStall) {
    Tuning tuning = shortTimes();
    tuning.retry.retries = 2;
    tuning.retry.longestRetryAfter = Milliseconds(1);
    if (isToStall) tuning.stall = Milliseconds(150);
    restart(tuning);
    std::filesystem::remove_all(movies());
    std::filesystem::remove_all(parts());
    downloads_->setTrustFile(folder_.write("trust.pem", authority_.certificatePem()));
  }

  ~Servers() override { nameProxy(""); }

  std::unique_ptr<ScriptedServer> serverOf(int protocol) const {
    if (protocol == kPlain) return std::make_unique<ScriptedServer>();
    support::TlsSettings settings;
    settings.identity = pki::issue(authority_, {});
    settings.minVersion = settings.maxVersion = protocol;
    return std::make_unique<ScriptedServer>(settings);
  }

  /// A proxy says in its own words what it makes of a server; a tunnel it only refuses.
  static bool isExpected(const Fault& fault, const Way& way, TransferFailure outcome) {
    const bool isOfProxy = way.protocol == kPlain || playerx::statusOfFailure(outcome) >= 500;
    return (way.hasProxy && isOfProxy) || fault.outcomes.contains(outcome);
  }

  void expectHonest(const Fault& fault, const Way& way) {
    SCOPED_TRACE(fault.name);
    beginAnew(fault.outcomes.contains(TransferFailure::kStalled));
    const auto server = serverOf(way.protocol);
    const std::string url = server->url("/film.avi");
    server->onRequest([&](const std::string&) { return fault.script(url); });
    const auto start = std::chrono::steady_clock::now();
    const Reported reported = fetch(url);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    const auto outcome = static_cast<TransferFailure>(reported.broke.value_or(0));
    EXPECT_TRUE(isExpected(fault, way, outcome)) << static_cast<int>(outcome);
    EXPECT_TRUE(film() == (outcome == TransferFailure::kNone ? wantedFilm() : ""));
  }

  void expectAllHonest(const Way& way) {
    const support::TinyProxy proxy;
    if (way.hasProxy) nameProxy("http://127.0.0.1:" + std::to_string(proxy.port()));
    for (const Fault& fault : faults()) expectHonest(fault, way);
  }

  const support::Identity authority_ = pki::authority("Films");
};

TEST_F(Servers, ThatMisbehaveInTheClearNeverPassAPartForAFilm) { expectAllHonest({kPlain, false}); }

TEST_F(Servers, ThatMisbehaveUnderTls12NeverPassAPartForAFilm) {
  expectAllHonest({TLS1_2_VERSION, false});
}

TEST_F(Servers, ThatMisbehaveUnderTls13NeverPassAPartForAFilm) {
  expectAllHonest({TLS1_3_VERSION, false});
}

TEST_F(Servers, ThatMisbehaveBehindAProxyNeverPassAPartForAFilm) {
  expectAllHonest({kPlain, true});
}

TEST_F(Servers, ThatMisbehaveInATunnelUnderTls12NeverPassAPartForAFilm) {
  expectAllHonest({TLS1_2_VERSION, true});
}

TEST_F(Servers, ThatMisbehaveInATunnelUnderTls13NeverPassAPartForAFilm) {
  expectAllHonest({TLS1_3_VERSION, true});
}

}  // namespace
}  // namespace soak
