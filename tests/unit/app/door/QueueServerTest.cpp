#include <gmock/gmock.h>

#include <thread>

#include "playerx/app/door/DoorPath.h"
#include "playerx/app/door/QueueClient.h"
#include "playerx/app/door/QueueServer.h"
#include "tests/support/Gate.h"
#include "tests/support/WaitFor.h"
#include "tests/unit/app/FakeSession.h"

namespace playerx::door {
namespace {

using namespace std::chrono_literals;
using session::QueueEvent;
using session::Reply;
using session::Request;
using support::kGenerousDeadline;
using testing::ElementsAre;
using testing::HasSubstr;
using Action = Request::Action;

/// A server of a fake queue, answering on the test's thread; its clients have threads of their own.
class QueueServerTest : public testing::Test {
 protected:
  QueueServerTest()
      : service_(
            fake_.session(), model::QueueTracker::Keep::kUnlessComplete, [] {}, reasons::Probe(),
            [this](const QueueEvent& event) { server_->publish(event); }) {
    server_.emplace(service_, [] {});
    EXPECT_EQ(server_->listen(data()), "");
  }

  std::string data() { return fake_.session().places().data; }

  /// Serves until the client has done its work.
  void serveWhile(const std::function<void(QueueClient&)>& work) {
    std::atomic<bool> isDone = false;
    std::jthread client([&] {
      QueueClient client;
      EXPECT_EQ(client.connect(data(), kGenerousDeadline), QueueClient::Outcome::kQueue);
      work(client);
      isDone = true;
    });
    while (!isDone) {
      server_->answerRequests();
      service_.watch().update();
    }
  }

  FakeSession fake_;
  session::QueueService service_;
  std::optional<QueueServer> server_;
};

TEST_F(QueueServerTest, ARequestIsAnsweredWithItsReply) {
  fake_.module.put("http://h/a.avi");
  serveWhile([](QueueClient& client) {
    const auto reply = client.ask({.action = Action::kList}, kGenerousDeadline);
    ASSERT_TRUE(reply);
    ASSERT_EQ(reply->items.size(), 1u);
    EXPECT_EQ(reply->items[0].url, "http://h/a.avi");
  });
}

TEST_F(QueueServerTest, ThoseThatWatchAreToldWhatHappens) {
  serveWhile([](QueueClient& client) {
    EXPECT_TRUE(client.ask({.action = Action::kWatch}, kGenerousDeadline));
    client.send({.action = Action::kAdd, .inputs = {"http://h/a.avi"}});
    const auto first = client.receive(kGenerousDeadline);
    ASSERT_TRUE(first && std::holds_alternative<QueueEvent>(*first));
    EXPECT_EQ(std::get<QueueEvent>(*first).kind, QueueEvent::Kind::kAdded);
    const auto second = client.receive(kGenerousDeadline);
    ASSERT_TRUE(second && std::holds_alternative<Reply>(*second));
  });
}

TEST_F(QueueServerTest, AWindowIsShownWithTheInputsThatItIsGiven) {
  std::vector<std::string> shown;
  server_.reset();
  server_.emplace(
      service_, [] {}, [&shown](const std::vector<std::string>& inputs) { shown = inputs; });
  EXPECT_EQ(server_->listen(data()), "");
  serveWhile([](QueueClient& client) {
    const auto reply =
        client.ask({.action = Action::kShow, .inputs = {"/a.tix"}}, kGenerousDeadline);
    EXPECT_EQ(reply->outcome, Reply::Outcome::kDone);
  });
  EXPECT_THAT(shown, ElementsAre("/a.tix"));
}

TEST_F(QueueServerTest, WhatIsNoRequestIsSaid) {
  serveWhile([this](QueueClient&) {
    DoorClient door;
    EXPECT_TRUE(door.connect(doorPath(data()), kGenerousDeadline));
    door.send("garbage");
    EXPECT_THAT(door.receive(kGenerousDeadline).value_or("").toStdString(),
                HasSubstr("not understood"));
  });
}

TEST_F(QueueServerTest, AWrongRequestIsSaidToBeWrongUse) {
  fake_.module.put("http://h/a.avi");
  serveWhile([this](QueueClient&) {
    DoorClient door;
    EXPECT_TRUE(door.connect(doorPath(data()), kGenerousDeadline));
    door.send(R"({"action":"move","position":1})");
    const std::string reply = door.receive(kGenerousDeadline).value_or("").toStdString();
    EXPECT_THAT(reply, HasSubstr(R"("reply":"wrong_use")"));
    EXPECT_THAT(reply, HasSubstr("names no direction"));
  });
}

TEST_F(QueueServerTest, AServerThatEndsIsNoticed) {
  QueueClient client;
  EXPECT_EQ(client.connect(data(), kGenerousDeadline), QueueClient::Outcome::kQueue);
  server_.reset();
  EXPECT_FALSE(client.ask({.action = Action::kList}, kGenerousDeadline));
  EXPECT_THAT(client.problem(), HasSubstr("has ended"));
  EXPECT_TRUE(client.hasGone());
}

TEST_F(QueueServerTest, NobodyIsMetWhereNobodyServes) {
  server_.reset();
  EXPECT_EQ(QueueClient().connect(data(), kGenerousDeadline), QueueClient::Outcome::kNoServer);
}

/// A server that is not this program's.
class StrangerTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { needApplication(); }

  void serve(const QByteArray& greeting) {
    server_.emplace(greeting, "", [] {});
    EXPECT_EQ(server_->listen(doorPath(folder_.path())), "");
  }

  QueueClient::Outcome meet() { return client_.connect(folder_.path(), kGenerousDeadline); }

  support::TempDir folder_;
  std::optional<DoorServer> server_;
  QueueClient client_;
};

TEST_F(StrangerTest, AnotherVersionIsNamed) {
  serve(write(Greeting{.protocol = 2, .version = "9.9", .pid = 7}));
  EXPECT_EQ(meet(), QueueClient::Outcome::kIncompatible);
  EXPECT_EQ(client_.problem(),
            "The queue is held by another version of the player (9.9, process 7); close it, or use "
            "that version.");
}

TEST_F(StrangerTest, AGreetingThatIsNoneIsSaid) {
  serve("Welcome!");
  EXPECT_EQ(meet(), QueueClient::Outcome::kIncompatible);
  EXPECT_THAT(client_.problem(), HasSubstr("not understood"));
}

TEST_F(StrangerTest, GarbageInPlaceOfAReplyIsSaid) {
  serve(write(Greeting{}));
  ASSERT_EQ(meet(), QueueClient::Outcome::kQueue);
  client_.send({.action = Action::kList});
  std::vector<DoorServer::Line> lines;
  ASSERT_TRUE(support::waitFor([&] {
    lines = server_->takeLines();
    return !lines.empty();
  }));
  server_->send(lines.front().visitor, "garbage");
  EXPECT_FALSE(client_.receive(kGenerousDeadline));
  EXPECT_THAT(client_.problem(), HasSubstr("not understood"));
}

TEST_F(StrangerTest, SilenceIsSaid) {
  serve(write(Greeting{}));
  ASSERT_EQ(meet(), QueueClient::Outcome::kQueue);
  EXPECT_FALSE(client_.ask({.action = Action::kList}, 20ms));
  EXPECT_THAT(client_.problem(), HasSubstr("does not answer"));
  EXPECT_FALSE(client_.hasGone());
}

}  // namespace
}  // namespace playerx::door
