#pragma once

#include <functional>
#include <optional>
#include <string>

#include "playerx/app/session/PlayerSession.h"
#include "playerx/settings/PreferenceOverrides.h"
#include "tests/support/TempDir.h"
#include "tests/unit/app/FakeModule.h"

namespace playerx {

/// A session whose download manager is a fake one, in folders of its own. Owner: the test.
class FakeSession {
 public:
  /// Opens the session unless told otherwise.
  explicit FakeSession(
      std::function<void()> wake = [] {}, bool opens = true) {
    needApplication();
    session::SessionOptions options;
    options.dataFolder = folder / "data";
    options.mediaFolder = folder / "films";
    options.pluginFolder = folder.path();
    session_.emplace(
        options, session::SessionListener{std::move(wake), [](const std::string&) { return -1; }});
    module.offerTo(*session_);
    offer<TransferReports>(session_->plugins(), DIN_TransferReports, &reports);
    if (!opens) return;
    EXPECT_EQ(session_->open(session::PlayerSession::Access::kChange), "");
  }

  ~FakeSession() {
    // The session looks at the queue once more, when what a test has planned may be gone.
    module.atEachLook({});
    module.atNextLooks({});
    session_.reset();
    clearPreferenceOverrides();
  }

  session::PlayerSession& session() { return *session_; }

  support::TempDir folder;
  support::EventLog log;
  FakeModule module{log};
  FakeReports reports;

 private:
  std::optional<session::PlayerSession> session_;
};

}  // namespace playerx
