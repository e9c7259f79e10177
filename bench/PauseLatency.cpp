#include "bench/PauseLatency.h"

#include <QCoreApplication>
#include <chrono>
#include <stdexcept>
#include <thread>

#include "bench/Measure.h"
#include "kvpm/StringTools.h"
#include "playerx/app/session/PlayerSession.h"

namespace bench {

namespace {

using playerx::session::PlayerSession;

std::uint64_t arrivedBytes(const PlayerSession& session, const std::string& url) {
  const auto transfer = session.findTransfer(url);
  return transfer ? transfer->arrived : 0;
}

/// Waits until more bytes have arrived than before.
void waitForBytes(PlayerSession& session, const std::string& url, std::uint64_t before) {
  while (arrivedBytes(session, url) <= before) {
    if (playerx::model::snapshotOf(session.manager()).at(0).status >= DownloadStatusCompleted) {
      throw std::runtime_error("the transfer ended before it was paused");
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

}  // namespace

std::vector<double> pauseLatencies(const std::string& plugins, const std::string& home,
                                   const std::string& url, int rounds) {
  playerx::session::SessionOptions options;
  options.pluginFolder = plugins;
  options.dataFolder = home + "/data";
  options.mediaFolder = home + "/films";
  PlayerSession session(options, {[] {}, [](const std::string&) { return -1; }});
  const std::string problem = session.open(PlayerSession::Access::kChange);
  if (!problem.empty()) throw std::runtime_error(problem);
  session.start();
  session.manager().add(kvpm::StringTools::stringToWString(url), L"", L"");

  std::vector<double> milliseconds;
  std::uint64_t before = 0;
  for (int round = 0; round < rounds; ++round) {
    waitForBytes(session, url, before);
    milliseconds.push_back(1000 * secondsOf([&session] { session.manager().pause(); }));
    before = arrivedBytes(session, url);
    session.manager().resume();
  }
  session.manager().pause();
  return milliseconds;
}

}  // namespace bench
