#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <variant>

#include "playerx/app/door/QueueClient.h"
#include "tests/soak/Count.h"
#include "tests/soak/Holdings.h"
#include "tests/soak/endurance/FaultyFilms.h"
#include "tests/system/PlayerHome.h"

namespace soak {
namespace {

namespace fs = std::filesystem;
using playerx::door::QueueClient;
using playerx::session::QueueEvent;
using playerx::session::Reply;
using playerx::session::Request;
using std::chrono::seconds;
using std::chrono::steady_clock;
using Action = Request::Action;

constexpr int kOldItems = 1'000;

/// Completed and failed ones by turns, which no command without their position touches.
std::string oldQueue() {
  std::string items;
  for (int i = 0; i < kOldItems; ++i) {
    const std::string number = std::to_string(i);
    items += "<DownloadItem title=\"old " + number + "\" status=\"" + (i % 2 == 0 ? "4" : "6") +
             "\" url=\"http://films.example/" + number + ".avi\"/>";
  }
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DownloadQueue>" + items +
         "</DownloadQueue>\n";
}

/// One player beside a long queue, to which films are added through its socket, round by round, and
/// taken away again once they have ended. Between two rounds it waits for the last one's held film.
class Endurance : public testing::Test {
 protected:
  Endurance() {
    fs::create_directories(home_.data());
    support::writeFile(home_.queueFile(), oldQueue());
    player_.emplace(support::ProcessOptions{
        .arguments = home_.commandLine({"--quiet", "get", films_.url(heldFilm())}),
        .environment = home_.environment()});
    EXPECT_TRUE(support::waitFor([this] {
      return client_.emplace().connect(home_.data(), seconds(1)) == QueueClient::Outcome::kQueue;
    })) << player_->errors();
    send({.action = Action::kWatch});
    handleUntil([this] { return unanswered_ == 0; });
  }

  int heldFilm() const { return rounds_ * FaultyFilms::kRound - 1; }

  /// Fetches the films of one round, and the held one of the round before.
  void round() {
    const int held = heldFilm();
    ++rounds_;
    Request good{.action = Action::kAdd};
    Request faulty{.action = Action::kAdd, .options = {.tries = 1, .timeout = seconds(2)}};
    for (int film = held + 1; film <= heldFilm(); ++film) {
      Request& add = FaultyFilms::reasonOf(film).empty() ? good : faulty;
      add.inputs.push_back(films_.url(film));
    }
    send(faulty);
    send(good);
    handleUntil([this] { return unanswered_ == 0; });
    films_.release(held);
    const int wanted = ended_ + FaultyFilms::kRound;
    handleUntil([this, wanted] { return ended_ == wanted && unanswered_ == 0; });
  }

  void workFor(steady_clock::duration time) {
    const auto end = steady_clock::now() + time;
    while (steady_clock::now() < end && !HasFailure()) round();
  }

  void send(const Request& request) {
    ASSERT_TRUE(client_->send(request)) << client_->problem();
    ++unanswered_;
  }

  void handleUntil(const std::function<bool()>& isReached) {
    while (!HasFailure() && !isReached()) {
      const auto answer = client_->receive(support::kGenerousDeadline);
      ASSERT_TRUE(answer) << client_->problem() << player_->errors();
      std::visit([this](const auto& what) { handle(what); }, *answer);
    }
  }

  void handle(const Reply& reply) {
    --unanswered_;
    EXPECT_EQ(reply.outcome, Reply::Outcome::kDone) << testing::PrintToString(reply.notes);
  }

  void handle(const QueueEvent& event) {
    using Kind = QueueEvent::Kind;
    if (event.kind != Kind::kFinished && event.kind != Kind::kFailed) return;
    const int film = FaultyFilms::numberIn(event.item.url);
    const std::string reason = event.kind == Kind::kFailed ? event.reason.code() : "";
    EXPECT_EQ(reason, FaultyFilms::reasonOf(film)) << film;
    if (reason.empty()) {
      EXPECT_TRUE(support::readFile(event.item.path) == FaultyFilms::bytesOf(film)) << film;
    }
    ++ended_;
    failed_ += reason.empty() ? 0 : 1;
    send({.action = Action::kRemove, .id = event.item.id, .withFilm = true});
  }

  std::string process() const { return std::to_string(player_->pid()); }

  /// The player waits for the held film alone.
  void expectNothingLeft() const {
    EXPECT_THAT(home_.films(), testing::IsEmpty());
    EXPECT_LE(home_.partials().size(), 2U) << "the held film and what is known of it";
    EXPECT_EQ(home_.queue().size(), kOldItems + 1U);
  }

  void end() {
    films_.release(heldFilm());
    EXPECT_EQ(player_->wait(), 1) << "some films have failed" << player_->errors();
    EXPECT_THAT(home_.partials(), testing::IsEmpty());
    EXPECT_THAT(support::hiddenFilesIn(home_.data()), testing::IsEmpty());
  }

  FaultyFilms films_;
  system_test::PlayerHome home_;
  std::optional<support::Process> player_;
  std::optional<QueueClient> client_;
  int rounds_ = 1;
  int unanswered_ = 0;
  int ended_ = 0;
  int failed_ = 0;
};

TEST_F(Endurance, OfManyFilmsLeavesNothingBehind) {
  const int time = countOr(4);
  workFor(seconds(1 + time / 6));
  const Holdings before = holdingsOf(process());
  workFor(seconds(time));
  ASSERT_FALSE(HasFailure());
  const Holdings after = expectFlat(before, process());
  expectNothingLeft();
  std::cout << ended_ << " films, " << failed_ << " of them faulty; " << before.kilobytes
            << " KB became " << after.kilobytes << std::endl;
  end();
}

}  // namespace
}  // namespace soak
