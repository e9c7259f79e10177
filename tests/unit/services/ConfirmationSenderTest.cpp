#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>
#include <vector>

#include "playerx/services/ConfirmationSender.h"

namespace playerx {
namespace {

TEST(ConfirmationSenderTest, RequestsAreSentInTheirOrder) {
  std::vector<std::string> sent;
  {
    ConfirmationSender sender([&sent](const std::string& request, const IsGivenUp&) {
      sent.push_back(request);
      return true;
    });
    for (const char* request : {"a", "b", "c"}) sender.enqueue(request);
  }
  EXPECT_EQ(sent, (std::vector<std::string>{"a", "b", "c"}));
}

TEST(ConfirmationSenderTest, QueueingDoesNotWaitForTheService) {
  std::promise<void> answer;
  std::shared_future<void> answered(answer.get_future());
  std::vector<std::string> sent;
  {
    ConfirmationSender sender([&](const std::string& request, const IsGivenUp&) {
      answered.wait();
      sent.push_back(request);
      return true;
    });
    sender.enqueue("a");
    sender.enqueue("b");  // the service has not answered "a" yet
    answer.set_value();
  }
  EXPECT_EQ(sent, (std::vector<std::string>{"a", "b"}));
}

TEST(ConfirmationSenderTest, WhatFailedIsSentAgain) {
  std::atomic<int> tries{0};
  std::promise<void> arrived;
  ConfirmationSender sender(
      [&](const std::string&, const IsGivenUp&) {
        if (++tries < 4) return false;
        arrived.set_value();
        return true;
      },
      std::chrono::milliseconds(1));
  sender.enqueue("a");
  arrived.get_future().wait();
  EXPECT_EQ(tries, 4);
}

TEST(ConfirmationSenderTest, TheEndTriesUpToTheFirstFailureOnly) {
  std::atomic<int> tries{0};
  std::promise<void> first;
  {
    ConfirmationSender sender([&](const std::string&, const IsGivenUp&) {
      if (++tries == 1) first.set_value();
      return false;
    });
    for (const char* request : {"a", "b", "c"}) sender.enqueue(request);
    first.get_future().wait();
  }
  EXPECT_LE(tries, 2);
}

TEST(ConfirmationSenderTest, TheEndGivesUpASilentServiceInTheMidstOfWork) {
  constexpr std::chrono::milliseconds kUnused(0);
  constexpr std::chrono::milliseconds kLastChance(20);
  std::promise<void> first;
  std::atomic<int> tries{0};
  {
    ConfirmationSender sender(
        [&](const std::string&, const IsGivenUp& isGivenUp) {
          if (++tries == 1) first.set_value();
          while (!isGivenUp()) std::this_thread::yield();
          return false;
        },
        kUnused, kLastChance);
    for (const char* request : {"a", "b", "c"}) sender.enqueue(request);
    first.get_future().wait();
  }
  EXPECT_LE(tries, 2);
}

TEST(ConfirmationSenderTest, TheEndLetsAnAnswerComeThatTakesAMoment) {
  using Clock = std::chrono::steady_clock;
  std::promise<void> first;
  std::vector<std::string> sent;
  {
    ConfirmationSender sender([&](const std::string& request, const IsGivenUp& isGivenUp) {
      if (request == "a") first.set_value();
      const auto answered = Clock::now() + std::chrono::milliseconds(20);
      while (Clock::now() < answered) {
        if (isGivenUp()) return false;
      }
      sent.push_back(request);
      return true;
    });
    for (const char* request : {"a", "b"}) sender.enqueue(request);
    first.get_future().wait();
  }
  EXPECT_EQ(sent, (std::vector<std::string>{"a", "b"}));
}

TEST(ConfirmationSenderTest, ARequestQueuedWhileAnotherIsSentFollowsIt) {
  std::vector<std::string> sent;
  std::promise<void> isLast;
  ConfirmationSender* self = nullptr;
  ConfirmationSender sender([&](const std::string& request, const IsGivenUp&) {
    sent.push_back(request);
    if (request == "a") self->enqueue("b");
    if (request == "b") isLast.set_value();
    return true;
  });
  self = &sender;
  sender.enqueue("a");
  isLast.get_future().wait();
  EXPECT_EQ(sent, (std::vector<std::string>{"a", "b"}));
}

}  // namespace
}  // namespace playerx
