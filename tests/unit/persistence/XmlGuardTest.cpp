#include <gmock/gmock.h>

#include <string>

#include "persistence/XmlGuard.h"

namespace persistence {
namespace {

std::string elementWith(int attributes, const std::string& value = "''") {
  std::string element = "<a";
  for (int i = 0; i < attributes; ++i) element += " a" + std::to_string(i) + "=" + value;
  return element + "/>";
}

TEST(XmlGuard, OrdinaryDocumentsAreHarmless) {
  EXPECT_TRUE(isHarmlessXml(""));
  EXPECT_TRUE(isHarmlessXml("no markup at all"));
  EXPECT_TRUE(isHarmlessXml("<DownloadQueue><DownloadItem title=\"a\"/></DownloadQueue>"));
  EXPECT_TRUE(isHarmlessXml("<a b=''/"));
  EXPECT_TRUE(isHarmlessXml("<a b='"));
  EXPECT_TRUE(isHarmlessXml("<a b="));
  EXPECT_TRUE(isHarmlessXml("<"));
}

TEST(XmlGuard, ADocumentTypeIsNot) {
  EXPECT_FALSE(isHarmlessXml("<!DOCTYPE a><a/>"));
  EXPECT_FALSE(isHarmlessXml("<!-- -->\n<!DOCTYPE a [<!ENTITY b 'c'>]><a/>"));
}

TEST(XmlGuard, SixtyFourAttributesAreAllowed) {
  EXPECT_TRUE(isHarmlessXml(elementWith(64)));
  EXPECT_FALSE(isHarmlessXml(elementWith(65)));
  EXPECT_FALSE(isHarmlessXml("<b/>" + elementWith(65) + "<b/>"));
  EXPECT_FALSE(isHarmlessXml(elementWith(65, " \t\r\n\"x\"")));
}

TEST(XmlGuard, AttributesAreCountedPerElement) {
  EXPECT_TRUE(isHarmlessXml(elementWith(64) + elementWith(64)));
}

TEST(XmlGuard, TextBehindATagIsNotCounted) {
  std::string text;
  for (int i = 0; i < 1000; ++i) text += " a='b'";
  EXPECT_TRUE(isHarmlessXml("<a>" + text + "</a>"));
  EXPECT_TRUE(isHarmlessXml("<a b = \">\" c='>'/>" + text + "<a/>"));
  EXPECT_TRUE(isHarmlessXml("<a><!-- > -->" + text + "</a>"));
  EXPECT_FALSE(isHarmlessXml("<a b='>'" + text + "/>"));
  EXPECT_FALSE(isHarmlessXml("<a b='>' c=\">\"" + text));
}

TEST(XmlGuard, WhatValuesHoldIsNotCounted) {
  EXPECT_TRUE(isHarmlessXml("<a b=\"" + elementWith(1000).substr(1) + "\"/>"));
  std::string quotes;
  for (int i = 0; i < 1000; ++i) quotes += "='";
  EXPECT_TRUE(isHarmlessXml("<a b=\"" + quotes + "\"/>"));
}

}  // namespace
}  // namespace persistence
