#include <gtest/gtest.h>

#include "playerx/app/inputs/TicketContents.h"
#include "tests/support/TempDir.h"
#include "tests/support/fakes/FakeServices.h"

namespace playerx::inputs {
namespace {

/// Every server holds a film of five bytes, but for "gone".
reasons::ProbeResult fiveBytes(const std::string& address, const std::stop_token&) {
  reasons::ProbeResult result{.address = address, .end = {}, .words = {}, .status = 200};
  result.length = 5;
  if (address.find("gone") != std::string::npos) result.status = 410;
  return result;
}

class TicketContentsTest : public testing::Test {
 protected:
  std::vector<TicketFinding> examine(const std::string& body,
                                     VeskPlayerX::ZPSServicesInterface* services = nullptr) {
    return examineTicket(folder_.write("a.tix", "TixVeskVersion=1.0\n" + body), services,
                         fiveBytes);
  }

  support::TempDir folder_;
  support::EventLog log_;
  support::FakeServices services_{log_};
};

TEST_F(TicketContentsTest, AFilmComesWithSizeAndRoom) {
  const auto findings = examine("start\nurl=http://h/a.avi\nend\n");
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_TRUE(findings[0].isFilm);
  EXPECT_EQ(findings[0].line, 2);
  EXPECT_EQ(findings[0].title, "a.avi");
  EXPECT_EQ(findings[0].provider, "h");
  EXPECT_EQ(findings[0].size, 5u);
  EXPECT_EQ(findings[0].fits, true);
}

TEST_F(TicketContentsTest, AFilmThatItsServerDoesNotHaveCarriesTheReason) {
  const auto findings = examine("start\ntitle=T\nurl=http://h/gone.avi\nend\n");
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].title, "T");
  EXPECT_EQ(findings[0].size, std::nullopt);
  EXPECT_EQ(findings[0].note,
            "h no longer has this film (410); ask the provider for a new address.");
}

TEST_F(TicketContentsTest, ProblemsComeBehindTheFilms) {
  const auto findings = examine("start\nend\nstart\nurl=http://h/a.avi\nend\n");
  ASSERT_EQ(findings.size(), 2u);
  EXPECT_TRUE(findings[0].isFilm);
  EXPECT_FALSE(findings[1].isFilm);
  EXPECT_EQ(findings[1].line, 2);
}

TEST_F(TicketContentsTest, EachProblemIsSaidInItsOwnWords) {
  const struct {
    const char* body;
    int line;
    const char* note;
  } rows[] = {
      {"", 0, "There is no line \"start\", so the ticket names no film."},
      {"start\nend\n", 2, "This film has no line \"url=\", so it cannot be fetched."},
      {"start\nurl=u\n", 2, "This film has no line \"end\"."},
      {"start\nstart\nurl=http://h/a.avi\nend\n", 2,
       "This film has no line \"end\" before the next \"start\"."},
      {"end\nstart\nurl=http://h/a.avi\nend\n", 2, "There is an \"end\" without a \"start\"."},
  };
  for (const auto& row : rows) {
    const TicketFinding last = examine(row.body).back();
    EXPECT_EQ(last.line, row.line) << row.body;
    EXPECT_EQ(last.note, row.note) << row.body;
  }
}

TEST_F(TicketContentsTest, AHeaderThatDoesNotFitIsNamed) {
  const auto noteOf = [this](const std::string& text) {
    return examineTicket(folder_.write("h.tix", text), nullptr, fiveBytes).at(0).note;
  };
  EXPECT_EQ(noteOf(" \n"), "The ticket is empty.");
  EXPECT_EQ(noteOf("start\n"), "A ticket begins with the line TixVeskVersion=1.0.");
  EXPECT_EQ(noteOf("TixVeskVersion=2\n"), "This ticket's version is 2; only version 1.0 is known.");
}

TEST_F(TicketContentsTest, AProtectedTicketIsReadByTheServices) {
  VeskDrmTicketData record;
  record.title = L"Secret";
  services_.setTicketRecords({record});
  const auto findings = examine("", &services_);
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_TRUE(findings[0].isFilm);
  EXPECT_EQ(findings[0].title, "Secret");
  EXPECT_EQ(findings[0].size, std::nullopt);
}

TEST_F(TicketContentsTest, OnlyTheFirstFilmsAreAskedAbout) {
  std::string body;
  for (int i = 0; i < 60; ++i) body += "start\nurl=http://h/a.avi\nend\n";
  const auto findings = examine(body);
  ASSERT_EQ(findings.size(), 60u);
  EXPECT_EQ(findings[49].size, 5u);
  EXPECT_EQ(findings[50].size, std::nullopt);
}

TEST_F(TicketContentsTest, OfMillionsOfFaultsTheFirstAreListed) {
  std::string body;
  for (int i = 0; i < 10'001; ++i) body += "end\n";
  const auto findings = examine(body + "start\nurl=http://h/a.avi\nend\n");
  ASSERT_EQ(findings.size(), 10'002u);
  EXPECT_EQ(findings[10'000].line, 10'001);
  EXPECT_EQ(findings[10'001].note, "The rest of this ticket is not listed.");
}

TEST_F(TicketContentsTest, WhatIsNotATicketFileIsSaid) {
  EXPECT_EQ(examineTicket("http://h/a.tix", nullptr, fiveBytes).at(0).note,
            "This is an address, not a ticket file.");
  const std::string missing = folder_ / "none.tix";
  EXPECT_EQ(examineTicket(missing, nullptr, fiveBytes).at(0).note,
            "There is no file " + missing + ".");
}

}  // namespace
}  // namespace playerx::inputs
