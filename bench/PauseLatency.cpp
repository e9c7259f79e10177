#include "bench/PauseLatency.h"

#include <QCoreApplication>
#include <stdexcept>

#include "bench/Measure.h"
#include "kvpm/StringTools.h"
#include "playerx/app/model/ItemState.h"
#include "playerx/app/session/PlayerHost.h"
#include "playerx/app/session/QueueView.h"
#include "playerx/app/session/TransferKnowledge.h"
#include "playerx/cli/ConsoleMessages.h"
#include "playerx/cli/Options.h"
#include "playerx/cli/WakeUp.h"

namespace bench {

namespace {

using namespace playerx;

std::uint64_t arrivedBytes(PlayerHost& host, const TransferKnowledge& knowledge) {
  return knowledge.bytesOf(snapshotOf(host.manager()).at(0)).value_or(0);
}

/// Waits until more bytes have arrived than before.
void waitForBytes(PlayerHost& host, const TransferKnowledge& knowledge, WakeUp& wakeUp,
                  std::uint64_t before) {
  while (arrivedBytes(host, knowledge) <= before) {
    if (snapshotOf(host.manager()).at(0).status >= DownloadStatusCompleted) {
      throw std::runtime_error("the transfer ended before it was paused");
    }
    wakeUp.wait(std::chrono::milliseconds(1));
  }
}

}  // namespace

std::vector<double> pauseLatencies(const std::string& plugins, const std::string& home,
                                   const std::string& url, int rounds) {
  Options options;
  options.pluginFolder = plugins;
  options.dataFolder = home + "/data";
  options.mediaFolder = home + "/films";
  setUpPlaces(options);
  WakeUp wakeUp;
  ConsoleMessages messages(wakeUp);
  QueueView view(wakeUp, [](const std::string&) { return -1; });
  PlayerHost host(options, messages);
  const std::string problem = host.loadManager();
  if (!problem.empty()) throw std::runtime_error(problem);
  const TransferKnowledge knowledge = transferKnowledge(host.context());
  host.manager().setViewInterface(&view);
  host.manager().add(kvpm::StringTools::stringToWString(url), L"", L"");

  std::vector<double> milliseconds;
  std::uint64_t before = 0;
  for (int round = 0; round < rounds; ++round) {
    waitForBytes(host, knowledge, wakeUp, before);
    milliseconds.push_back(1000 * secondsOf([&host] { host.manager().pause(); }));
    before = arrivedBytes(host, knowledge);
    host.manager().resume();
  }
  host.manager().pause();
  host.manager().setViewInterface(nullptr);
  return milliseconds;
}

}  // namespace bench
