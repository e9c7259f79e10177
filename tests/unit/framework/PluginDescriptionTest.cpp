#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "playerx/framework/PluginDescription.h"

namespace {

using playerx::DescriptionProblem;
using playerx::parseDescription;
using playerx::PluginDescription;

constexpr char kGood[] = R"({"id": "com.vesk.film", "version": "1.10",
                             "interfaces": ["com.a", "com.b"], "library": "libfilm.so"})";

TEST(PluginDescription, HoldsWhatTheTextSays) {
  const auto parsed = parseDescription(kGood, "/plugins");
  const auto* description = std::get_if<PluginDescription>(&parsed);
  ASSERT_NE(description, nullptr);
  EXPECT_EQ(description->info.id, "com.vesk.film");
  EXPECT_EQ(description->info.version, "1.10");
  EXPECT_EQ(description->info.interfaces, (std::vector<std::string>{"com.a", "com.b"}));
  EXPECT_EQ(description->library, "/plugins/libfilm.so");
}

TEST(PluginDescription, AnAbsoluteLibraryIsTakenAsItIs) {
  const auto parsed = parseDescription(
      R"({"id": "i", "version": "1", "interfaces": ["a"], "library": "/opt/x.so", "more": 1})",
      "/plugins");
  ASSERT_TRUE(std::holds_alternative<PluginDescription>(parsed));
  EXPECT_EQ(std::get<PluginDescription>(parsed).library, "/opt/x.so");
}

std::string problemOf(const std::string& json) {
  const auto parsed = parseDescription(json, "/plugins");
  const auto* problem = std::get_if<DescriptionProblem>(&parsed);
  return problem == nullptr ? "" : problem->text;
}

std::string with(const std::string& id, const std::string& version, const std::string& interfaces,
                 const std::string& library) {
  return R"({"id": )" + id + R"(, "version": )" + version + R"(, "interfaces": )" + interfaces +
         R"(, "library": )" + library + "}";
}

TEST(PluginDescription, EveryMemberIsRequired) {
  const std::string id = R"("i")";
  const std::string version = R"("1")";
  const std::string interfaces = R"(["a"])";
  const std::string library = R"("x.so")";
  ASSERT_EQ(problemOf(with(id, version, interfaces, library)), "");
  for (const char* bad : {R"("")", "1", "null", "[]"}) {
    EXPECT_EQ(problemOf(with(bad, version, interfaces, library)), "It has no \"id\".");
    EXPECT_EQ(problemOf(with(id, version, interfaces, bad)), "It has no \"library\".");
  }
  for (const char* bad : {R"("")", "1", R"("1.")", R"(".1")", R"("1..2")", R"("1.a")", R"("-1")",
                          R"("1 ")", R"("12345678901")"}) {
    EXPECT_EQ(problemOf(with(id, bad, interfaces, library)),
              "Its \"version\" is not made of numbers joined by dots.");
  }
  for (const char* bad : {"[]", R"("a")", "[1]", R"(["a", 1])", "{}", "null"}) {
    EXPECT_EQ(problemOf(with(id, version, bad, library)),
              "Its \"interfaces\" are not a list of texts.");
  }
}

TEST(PluginDescription, OtherTextsAreRefused) {
  EXPECT_EQ(problemOf("[]"), "It is not a JSON object.");
  EXPECT_EQ(problemOf("{}"), "It has no \"id\".");
  for (const std::string bad : {"", "{", "nonsense", "\xFF\xFE", "{\"id\": \"i\"} more"}) {
    EXPECT_TRUE(problemOf(bad).starts_with("It is not JSON: ")) << bad;
  }
}

TEST(PluginDescription, EveryBeginningOfAGoodOneIsRefused) {
  const std::string good = kGood;
  for (std::size_t length = 0; length < good.size(); ++length) {
    EXPECT_NE(problemOf(good.substr(0, length)), "") << length;
  }
}

}  // namespace
