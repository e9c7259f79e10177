#include <gtest/gtest.h>

#include <fstream>

#include "playerx/app/door/Protocol.h"

namespace playerx::door {
namespace {

using session::QueueEvent;
using session::Reply;
using session::Request;

model::ItemState film() {
  model::ItemState item;
  item.id = 4'000'000'000;
  item.title = "Grüße \"\n";
  item.provider = "h";
  item.url = "http://h/a.avi";
  item.path = "/films/a.avi";
  item.status = DownloadStatusDownloading;
  item.percent = 12;
  item.size = 1ULL << 60;
  item.playable = true;
  return item;
}

template <class T>
void expectSameAfterTheSocket(const T& message) {
  const QByteArray line = write(message);
  EXPECT_FALSE(line.contains('\n'));
  const auto answer = readAnswer(line);
  ASSERT_TRUE(answer && std::holds_alternative<T>(*answer)) << line.toStdString();
  EXPECT_EQ(std::get<T>(*answer), message) << line.toStdString();
}

TEST(ProtocolTest, AGreetingComesBackAsItWent) {
  const Greeting greeting{.protocol = 3, .version = "1.2", .pid = 77};
  EXPECT_EQ(readGreeting(write(greeting)), greeting);
}

TEST(ProtocolTest, ARequestComesBackAsItWent) {
  EXPECT_EQ(readRequest(write(Request{})), Request{});
  const Request request{.action = Request::Action::kMove,
                        .id = 9,
                        .position = 2,
                        .inputs = {"http://h/a.avi", "/b.tix"},
                        .name = "c.avi",
                        .starts = false,
                        .again = true,
                        .plays = true,
                        .options = {.username = "u",
                                    .password = "p",
                                    .tries = 3,
                                    .timeout = std::chrono::seconds(7),
                                    .headers = {"A: b", "C: d"},
                                    .referer = "r",
                                    .netrcFile = "/n",
                                    .cookieFile = "/c",
                                    .sha256 = "ab",
                                    .hasChecksumFile = true},
                        .direction = Request::Direction::kBefore,
                        .before = 4'000'000'001,
                        .dryRun = true,
                        .withFilm = true,
                        .rateLimit = 1ULL << 40};
  EXPECT_EQ(readRequest(write(request)), request);
}

TEST(ProtocolTest, AnAnswerComesBackAsItWent) {
  const reasons::Explanation reason = reasons::explain(reasons::Reason::kUnsupportedType);
  expectSameAfterTheSocket(Reply{});
  expectSameAfterTheSocket(
      Reply{Reply::Outcome::kWrongUse, {"One."}, {{"http://h/a.txt", reason}}, {film()}});
  expectSameAfterTheSocket(Reply{.results = {"Removed: a film."}});
  expectSameAfterTheSocket(QueueEvent{QueueEvent::Kind::kChanged, film()});
  const model::Progress progress{1ULL << 50, 5000, 7, 3, true, "/partial/a"};
  expectSameAfterTheSocket(QueueEvent{QueueEvent::Kind::kChanged, film(), progress});
  expectSameAfterTheSocket(QueueEvent{QueueEvent::Kind::kFinished, film(), {}, "It is odd."});
  expectSameAfterTheSocket(QueueEvent{QueueEvent::Kind::kFailed, film(), {}, "", reason});
  expectSameAfterTheSocket(QueueEvent{QueueEvent::Kind::kNote, {}, {}, "Hello."});
  expectSameAfterTheSocket(QueueEvent{.kind = QueueEvent::Kind::kQueue,
                                      .queue = {7, 2, 1ULL << 50, 1ULL << 51, 3, true}});
  expectSameAfterTheSocket(QueueEvent{.kind = QueueEvent::Kind::kMoved});
  expectSameAfterTheSocket(Reply{.items = {film()}, .progress = {{film().id, progress}}});
  expectSameAfterTheSocket(Reply{.items = {film()}, .isPaused = true});
  expectSameAfterTheSocket(Reply{.items = {film()}, .known = {film().id}, .there = {film()}});
}

TEST(ProtocolTest, TextThatIsNotUtf8IsReplaced) {
  const auto request = readRequest(write(Request{.inputs = {"a\xff"}}));
  ASSERT_TRUE(request);
  EXPECT_EQ(request->inputs[0], "a\xEF\xBF\xBD");
}

TEST(ProtocolTest, WhatIsNoMessageIsNotRead) {
  for (const char* line : {"",
                           "garbage",
                           "{",
                           "[]",
                           "7",
                           "{}",
                           "{\"action\":\"dance\"}",
                           "{\"action\":7}",
                           "{\"action\":\"list\",\"position\":\"x\"}",
                           "{\"action\":\"list\",\"position\":1e40}",
                           "{\"action\":\"list\",\"position\":99999999999}",
                           "{\"action\":\"remove\",\"id\":-1}",
                           "{\"action\":\"add\",\"inputs\":\"x\"}",
                           "{\"action\":\"add\",\"options\":7}",
                           "{\"action\":\"add\",\"options\":{\"tries\":-1}}",
                           "{\"action\":\"add\",\"options\":{\"headers\":[1]}}",
                           "{\"action\":\"limit\",\"rateLimit\":-5}",
                           "{\"action\":\"add\",\"inputs\":[7]}",
                           "{\"action\":\"add\",\"name\":\"../a.avi\"}",
                           "{\"action\":\"add\",\"again\":1}",
                           "{\"reply\":\"yes\"}",
                           "{\"event\":\"boom\"}",
                           "{\"event\":\"changed\",\"item\":{\"status\":\"lost\"}}",
                           "{\"event\":\"changed\",\"progress\":{\"secondsLeft\":\"x\"}}",
                           "{\"event\":\"failed\",\"reason\":1}",
                           "{\"reply\":\"done\",\"refused\":[{}]}",
                           "{\"queue\":\"other\"}"}) {
    EXPECT_FALSE(readRequest(line)) << line;
    EXPECT_FALSE(readAnswer(line)) << line;
    EXPECT_FALSE(readGreeting(line)) << line;
  }
}

TEST(ProtocolTest, AnEventHasWhatItsKindHas) {
  for (const char* line :
       {R"({"event":"changed","queue":{"done":1},"reason":{"number":3,"happened":"It failed"}})",
        R"({"event":"note","item":{"id":1},"progress":{"arrived":1}})"}) {
    const std::optional<Answer> answer = readAnswer(line);
    ASSERT_TRUE(answer) << line;
    EXPECT_EQ(readAnswer(write(std::get<QueueEvent>(*answer))), answer) << line;
  }
}

std::string faultOf(const QByteArray& line) {
  std::string fault = "none told";
  const bool isRequest = readRequest(line, &fault).has_value();
  EXPECT_EQ(isRequest, fault.empty()) << line.toStdString();
  return fault;
}

TEST(ProtocolTest, AMoveNamesItsItemAndItsWay) {
  for (const char* line :
       {R"({"action":"move","direction":"up"})", R"({"action":"remove","withFilm":true})",
        R"({"action":"remove","position":0})"}) {
    EXPECT_EQ(faultOf(line), "The request names no item; give its id, or its position from 1 on.");
  }
  for (const char* line :
       {R"({"action":"move","position":1})", R"({"action":"move","id":1,"direction":"left"})",
        R"({"action":"move","id":1,"direction":3})"}) {
    EXPECT_EQ(faultOf(line),
              "The request names no direction; give up, down, top, bottom or before.");
  }
  for (const char* line : {R"({"action":"move","id":1,"direction":"before"})",
                           R"({"action":"move","id":1,"direction":"before","before":0})"}) {
    EXPECT_EQ(faultOf(line),
              "The request does not name the item to move in front of; give its id as \"before\".");
  }
  EXPECT_EQ(faultOf(R"({"action":"move","id":1,"direction":"before","before":2})"), "");
}

TEST(ProtocolTest, OnlyAMoveHasADirection) {
  const std::optional<Request> request = readRequest(R"({"action":"list","direction":"before"})");
  ASSERT_TRUE(request);
  EXPECT_EQ(readRequest(write(*request)), request);
}

TEST(ProtocolTest, ALimitNamesItsRate) {
  EXPECT_EQ(faultOf(R"({"action":"limit"})"),
            "The request names no limit; give its rateLimit, 0 for none.");
  EXPECT_EQ(faultOf(R"({"action":"limit","rateLimit":0})"), "");
}

TEST(ProtocolTest, WhatOnlyOneFilmCanHaveIsNotSharedByTwo) {
  const QByteArray two = R"({"action":"add","inputs":["http://h/a.avi","http://h/b.avi"],)";
  const QByteArray sum(64, 'a');
  EXPECT_EQ(faultOf(two + R"("name":"x.avi"})"),
            "The option \"--output\" needs one address, no more.");
  EXPECT_EQ(faultOf(two + R"("options":{"sha256":")" + sum + "\"}}"),
            "A checksum is that of one address; sha-256 alone takes those of the files beside.");
  EXPECT_EQ(faultOf(R"({"action":"add","inputs":["http://h/a.avi"],"name":"x.avi"})"), "");
}

TEST(ProtocolTest, AnOptionWithAnImpossibleValueIsNamed) {
  const std::string impossible = "The request has an impossible value for the option ";
  const auto faultOfOption = [](const QByteArray& option) {
    return faultOf(R"({"action":"add","inputs":["http://h/a.avi"],"options":{)" + option + "}}");
  };
  EXPECT_EQ(faultOfOption(R"("tries":0)"), impossible + "tries.");
  EXPECT_EQ(faultOfOption(R"("timeoutSeconds":0)"), impossible + "timeoutSeconds.");
  EXPECT_EQ(faultOfOption(R"("tries":3,"timeoutSeconds":-3)"), impossible + "timeoutSeconds.");
  EXPECT_EQ(faultOfOption(R"("headers":"A: b")"), impossible + "headers.");
  EXPECT_EQ(faultOf(R"({"action":"add","name":"../../x.avi"})"),
            "\"../../x.avi\" is no file name; --media chooses the folder.");
}

TEST(ProtocolTest, DeepNestingIsNoMessage) {
  EXPECT_FALSE(readRequest(QByteArray(1'000'000, '[')));
  constexpr int kDepth = 100'000;
  const QByteArray objects = QByteArray("{\"a\":").repeated(kDepth) + "1";
  EXPECT_FALSE(readRequest(objects + QByteArray(kDepth, '}')));
  const QByteArray deep = QByteArray(kDepth, '[') + QByteArray(kDepth, ']');
  EXPECT_EQ(faultOf(R"({"action":"add","options":{"later":)" + deep + R"(,"tries":0}})"),
            "The request has an impossible value for the option tries.");
}

TEST(ProtocolTest, ANameNeedsItsAddress) {
  EXPECT_NE(faultOf(R"({"action":"add","name":"x.avi"})"), "");
  EXPECT_EQ(faultOf(R"({"action":"add"})"), "");
}

TEST(ProtocolTest, MembersOfLaterVersionsAreIgnored) {
  EXPECT_TRUE(readRequest("{\"action\":\"list\",\"color\":\"blue\"}"));
}

/// Each example of the document is a message of the kind that its line begins with.
TEST(ProtocolTest, TheExamplesOfTheDocumentAreMessages) {
  std::ifstream document(SOURCES_OF_THE_PLAYER "/docs/queue-protocol.md");
  int examples = 0;
  for (std::string line; std::getline(document, line);) {
    if (!line.starts_with("{\"")) continue;
    const QByteArray text = QByteArray::fromStdString(line);
    EXPECT_TRUE(readGreeting(text) || readRequest(text) || readAnswer(text)) << line;
    ++examples;
  }
  EXPECT_GE(examples, 10);
}

}  // namespace
}  // namespace playerx::door
