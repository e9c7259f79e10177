#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "VeskPlayerX/InterfaceIds.h"
#include "plugin/Intake.h"
#include "plugin/Playback.h"
#include "tests/support/TempDir.h"
#include "tests/support/WaitFor.h"
#include "tests/support/fakes/FakeContext.h"
#include "tests/support/fakes/FakePlayer.h"
#include "tests/support/fakes/FakeServices.h"
#include "tests/support/fakes/FakeView.h"
#include "tests/unit/plugin/FakeWorker.h"

/// The parts of a manager by themselves, over a worker that downloads nothing. The scheduler is not
/// started. Queues are spoken of as in QueueText.h.
class PartsFixture : public ::testing::Test {
 protected:
  using Lines = std::vector<std::string>;

  PartsFixture() {
    context_.offer<VeskPlayerX::PlayerInterface>(VeskPlayerX::DIN_Player, &player_);
    context_.offer<VeskPlayerX::ZPSServicesInterface>(VeskPlayerX::DIN_ZPSServices, &services_);
    queue_.open(folder_.path().wstring());
    queue_.view().attach(&view_);
  }

  ~PartsFixture() override {
    queue_.view().attach(nullptr);
    transfers_.close();
    transfers_.cancel();
  }

  void given(const std::string& queue) {
    queue_.use([&](plugin::DownloadQueue& items) { items.assign(queue_text::makeItems(queue)); });
  }

  std::string text() {
    const std::unique_ptr<std::vector<plugin::SharedQueue::Item*>> copy(queue_.copy());
    const std::string text = queue_text::textOf(*copy);
    for (auto* const item : *copy) delete item;
    return text;
  }

  unsigned int id(unsigned int index) { return queue_.at(index)->getId(); }

  /// Runs `action` with the operation lock held.
  template <class Action>
  auto locked(Action action) KVPM_NO_ANALYSIS {
    EXPECT_TRUE(lock_.enter());
    const plugin::OperationGuard guard(lock_);
    return action();
  }

  void await(const std::string& queue) {
    support::waitFor([&] { return text() == queue; });
    EXPECT_EQ(text(), queue);
  }

  support::TempDir folder_;
  support::EventLog log_;
  support::FakeView view_{log_};
  support::FakePlayer player_{log_};
  support::FakeServices services_{log_};
  support::FakeContext context_;
  FakeWorker worker_{log_};

  plugin::SharedQueue queue_;
  plugin::OperationLock lock_{queue_.events()};
  plugin::ServicesLookup lookup_{&context_};
  plugin::TransferControl transfers_{queue_, lock_, worker_};
  plugin::Moves moves_{queue_, lock_, transfers_};
  plugin::Progress progress_{queue_, lock_, lookup_, &context_};
  plugin::Scheduler scheduler_{queue_, lock_, transfers_, moves_, progress_};
  plugin::Playback playback_{queue_, lock_, transfers_, moves_, &context_};
  plugin::Intake intake_{queue_, lock_, transfers_, moves_, scheduler_, lookup_};
};
