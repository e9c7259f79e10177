#include <gtest/gtest.h>

#include "playerx/services/ServicesProtocol.h"

namespace playerx {
namespace {

const std::string kGood =
    R"({"success":true,"url":"http://h/a","username":"u","password":"p","ticketId":7,)"
    R"("size":1000,"rights":"cmlnaHRz"})";

VeskDrmDownloadAuthorization answerTo(const std::string& json) {
  VeskDrmDownloadAuthorization answer;
  answer.url = "left over";
  answer.success = true;
  authorizeAnswer(json, answer);
  return answer;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  return text.replace(text.find(from), from.size(), to);
}

TEST(ServicesProtocolTest, ARequestToReadCarriesTheFileAsText) {
  EXPECT_EQ(readTicketRequest("line\n\"x\""), R"({"ticket":"line\n\"x\""})");
}

TEST(ServicesProtocolTest, RecordsComeInTheirOrderWithAllFields) {
  const auto all = readTicketAnswer(
      R"({"records":[{"ticket":"t1","title":"Zürich","usageId":-5,"provider":"P","version":"2.1"},)"
      R"({"ticket":"t2","title":"B","usageId":6}]})");
  ASSERT_TRUE(all);
  const TicketRecords& records = *all;
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0]->ticket, "t1");
  EXPECT_EQ(records[0]->title, L"Zürich");
  EXPECT_EQ(records[0]->contentEncryptionUsageId, -5);
  EXPECT_EQ(records[0]->contentProviderDisplayName, L"P");
  EXPECT_EQ(records[0]->version, "2.1");
  EXPECT_EQ(records[1]->contentProviderDisplayName, L"");
}

TEST(ServicesProtocolTest, ATicketThatCannotBeReadHasNoRecords) {
  const auto records = readTicketAnswer(R"({"records":[]})");
  ASSERT_TRUE(records);
  EXPECT_TRUE(records->empty());
}

TEST(ServicesProtocolTest, MalformedRecordsMakeNoSense) {
  for (const char* json :
       {"", "[]", "null", "{", "<html>", R"({"records":5})", R"({"records":[5]})",
        R"({"records":[{"ticket":"","title":"A","usageId":1}]})",
        R"({"records":[{"ticket":"t","usageId":1}]})",
        R"({"records":[{"ticket":"t","title":"A","usageId":4294967296}]})",
        R"({"records":[{"ticket":"t","title":"A","usageId":"1"}]})",
        R"({"records":[{"ticket":"t","title":"A","usageId":1.5}]})"}) {
    EXPECT_FALSE(readTicketAnswer(json)) << json;
  }
}

TEST(ServicesProtocolTest, NoTitleLeadsOutOfTheMediaFolder) {
  const auto isTaken = [](const std::string& title) {
    const std::string record = R"({"ticket":"t","title":")" + title + R"(","usageId":1})";
    return readTicketAnswer(R"({"records":[)" + record + "]}").has_value();
  };
  for (const char* title : {"../a", "a/..", "a/../b", "..", R"(..\\a)", R"(a\\..\\b)"}) {
    EXPECT_FALSE(isTaken(title)) << title;
  }
  for (const char* title : {"a", "..a", "a..", "a/b", "...", "/a"}) {
    EXPECT_TRUE(isTaken(title)) << title;
  }
}

TEST(ServicesProtocolTest, AnAnswerThatNestsWithoutEndMakesNoSense) {
  const std::string deep(100'000, '[');
  for (const std::string& json :
       {deep, R"({"ready":)" + deep,
        R"({"success":true,"url":)" + std::string(17, '[') + std::string(17, ']') + "}"}) {
    EXPECT_FALSE(readyAnswer(json));
    EXPECT_FALSE(readTicketAnswer(json));
    EXPECT_EQ(answerTo(json).errorCode, kServicesMalformed);
  }
  EXPECT_FALSE(
      readyAnswer(R"({"ready":true,"more":)" + std::string(17, '[') + std::string(17, ']') + "}"));
  EXPECT_TRUE(readyAnswer(R"({"ready":true,"more":[[[["x"]]]]})"));
}

TEST(ServicesProtocolTest, BracketsInATextNestNothing) {
  const std::string brackets(100, '[');
  EXPECT_TRUE(readyAnswer(R"({"ready":true,"more":"\")" + brackets + R"("})"));
  EXPECT_TRUE(readyAnswer(R"({"more":")" + brackets + R"(\\","ready":true})"));
}

TEST(ServicesProtocolTest, HugeFieldsMakeNoSense) {
  const std::string huge(kMaxTicketText + 1, 'x');
  EXPECT_FALSE(
      readTicketAnswer(R"({"records":[{"ticket":")" + huge + R"(","title":"A","usageId":1}]})"));
  std::string many = R"({"records":[)";
  for (std::size_t i = 0; i <= kMaxRecords; ++i) {
    many += R"({"ticket":"t","title":"A","usageId":1},)";
  }
  many.back() = ']';
  EXPECT_FALSE(readTicketAnswer(many + "}"));
}

TEST(ServicesProtocolTest, ASuccessFillsEveryField) {
  const auto answer = answerTo(kGood);
  EXPECT_TRUE(answer.success);
  EXPECT_EQ(answer.url, "http://h/a");
  EXPECT_EQ(answer.tempUsername, "u");
  EXPECT_EQ(answer.tempPassword, "p");
  EXPECT_EQ(answer.ticketId, 7);
  EXPECT_EQ(answer.totalSize, 1000u);
  EXPECT_EQ(answer.strdChunkBase64, "cmlnaHRz");
}

TEST(ServicesProtocolTest, ARefusalCarriesCodeWithDetails) {
  const auto answer = answerTo(R"({"success":false,"error":32054,"details":"Full."})");
  EXPECT_FALSE(answer.success);
  EXPECT_EQ(answer.errorCode, 32054);
  EXPECT_EQ(answer.errorDetails, L"Full.");
  EXPECT_EQ(answer.url, "");
}

TEST(ServicesProtocolTest, AnIncompleteSuccessIsAFailure) {
  for (const std::string& json :
       {replaced(kGood, "http://h/a", ""), replaced(kGood, "\"url\"", "\"u\""),
        replaced(kGood, "1000", "-1"), replaced(kGood, "1000", "1e3"),
        replaced(kGood, "1000", "99999999999999999999999"), replaced(kGood, ":7", ":2147483648"),
        replaced(kGood, "\"p\"", "5"), replaced(kGood, "http://h/a", std::string(9000, 'x')),
        replaced(kGood, "true", "\"true\""), std::string("{\"success\": tru"), std::string()}) {
    const auto answer = answerTo(json);
    EXPECT_FALSE(answer.success) << json;
    EXPECT_EQ(answer.errorCode, kServicesMalformed) << json;
    EXPECT_FALSE(answer.errorDetails.empty()) << json;
  }
}

TEST(ServicesProtocolTest, TheLargestSizeIsCarried) {
  EXPECT_EQ(answerTo(replaced(kGood, "1000", "18446744073709551615")).totalSize,
            18446744073709551615u);
}

TEST(ServicesProtocolTest, OnlyTrueIsReady) {
  EXPECT_TRUE(readyAnswer(R"({"ready":true})"));
  for (const char* json : {R"({"ready":false})", R"({"ready":1})", "{}", "true", "", "[true]"}) {
    EXPECT_FALSE(readyAnswer(json)) << json;
  }
}

TEST(ServicesProtocolTest, RequestsNameTicketSlotBytes) {
  EXPECT_EQ(authorizeRequest("t", -1), R"({"slot":-1,"ticket":"t"})");
  EXPECT_EQ(confirmRequest(7, 18446744073709551615u),
            R"({"bytes":18446744073709551615,"ticketId":7})");
}

}  // namespace
}  // namespace playerx
