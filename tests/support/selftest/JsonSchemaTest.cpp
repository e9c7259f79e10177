#include <gtest/gtest.h>

#include "tests/support/JsonSchema.h"

namespace support {
namespace {

using Json = nlohmann::json;

const Json kQueue = {{"version", 1}, {"event", "queue"}, {"items", 2},        {"completed", 1},
                     {"arrived", 5}, {"total", 9},       {"unknownSizes", 0}, {"paused", false}};

std::string faultsWith(const char* member, const Json& value) {
  Json line = kQueue;
  line[member] = value;
  return faultsOf(line, schemaOfLines());
}

TEST(JsonSchemaTest, ALineThatKeepsEveryRuleHasNoFault) {
  EXPECT_EQ(faultsOf(kQueue, schemaOfLines()), "");
}

TEST(JsonSchemaTest, EachRuleFindsItsFault) {
  EXPECT_NE(faultsWith("version", 2), "");
  EXPECT_NE(faultsWith("event", "other"), "");
  EXPECT_NE(faultsWith("event", "added"), "");
  EXPECT_NE(faultsWith("items", -1), "");
  EXPECT_NE(faultsWith("items", "2"), "");
  EXPECT_NE(faultsWith("percent", 101), "");
  EXPECT_NE(faultsWith("oddity", ""), "");
  EXPECT_NE(faultsWith("unheardOf", 1), "");
  EXPECT_NE(faultsWith("reason", Json{{"code", "x"}}), "");
  Json line = kQueue;
  line.erase("items");
  EXPECT_NE(faultsOf(line, schemaOfLines()), "");
}

TEST(JsonSchemaTest, ARuleThatIsNotKnownIsAnError) {
  EXPECT_THROW(faultsOf(1, Json{{"pattern", "x"}}), std::logic_error);
}

}  // namespace
}  // namespace support
