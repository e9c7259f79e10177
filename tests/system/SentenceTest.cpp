#include <gmock/gmock.h>

#include "tests/support/Nginx.h"
#include "tests/support/ScriptedServer.h"
#include "tests/system/BigFile.h"
#include "tests/system/PlayerHome.h"

namespace system_test {
namespace {

using support::Nginx;
using support::Script;
using support::ScriptedServer;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// What people read when something cannot work.
class SentenceTest : public testing::Test {
 protected:
  /// Why a film failed.
  std::string failureOf(const std::string& url) { return sentenceOf("failed", {"get", url}, 1); }

  /// Why an input was refused before anything was added.
  std::string refusalOf(const std::string& input) {
    const std::string sentence = sentenceOf("refused", {"add", input}, 2);
    EXPECT_THAT(home.queue(), IsEmpty());
    return sentence;
  }

  std::string refusalOfTicketWith(const std::string& url) {
    return refusalOf(folder.write("film.tix", "TixVeskVersion=1.0\nstart\nurl=" + url + "\nend\n"));
  }

  support::TempDir folder;
  PlayerHome home;

 private:
  std::string sentenceOf(const std::string& event, const std::vector<std::string>& arguments,
                         int status) {
    const PlayerResult result = home.run(arguments);
    EXPECT_EQ(result.status, status) << result.output << result.errors;
    const std::vector<Json> events = result.events(event);
    return events.size() == 1 ? events[0]["reason"]["sentence"].get<std::string>()
                              : result.output + result.errors;
  }
};

TEST_F(SentenceTest, AddressesThatCanNeverWorkAreRefused) {
  EXPECT_THAT(refusalOf("http://[::1]/a.avi"), HasSubstr("IP address of version 6"));
  EXPECT_THAT(refusalOf("http://h/https/a.avi"), HasSubstr("has \"https\" further on"));
  EXPECT_THAT(refusalOf("http://https.example/a.avi"), HasSubstr("\"https\""));
  EXPECT_THAT(refusalOf("ftp://h/a.avi"), HasSubstr("http:// or https://"));
  EXPECT_THAT(refusalOf("file:///a.avi"), HasSubstr("http:// or https://"));
  EXPECT_THAT(refusalOf("http://h/a.txt"), HasSubstr(".vesk, .xvid, .avi or .mkv"));
}

TEST_F(SentenceTest, TheSameGoesForTickets) {
  EXPECT_THAT(refusalOfTicketWith("http://[::1]/a.avi"), HasSubstr("version 6"));
  EXPECT_THAT(refusalOfTicketWith("http://h/https/a.avi"), HasSubstr("\"https\""));
  EXPECT_THAT(refusalOfTicketWith("file:///etc/a.avi"), HasSubstr("Line 2 of this ticket"));
  EXPECT_THAT(refusalOfTicketWith("ftp://h/a.avi"), HasSubstr("Line 2 of this ticket"));
  EXPECT_THAT(refusalOfTicketWith("http://anna:secret@h/a.avi"),
              AllOf(HasSubstr("user name or password"), Not(HasSubstr("secret"))));
}

TEST_F(SentenceTest, WhiteSpaceAroundAnAddressIsDropped) {
  const Nginx server;
  server.serve("a.avi", distinctBytes(5000));
  EXPECT_EQ(home.run({"get", " \t" + server.url("/a.avi") + "\r\n"}).status, 0);
  const std::string list = folder.write("list", "  " + server.url("/a.avi") + " \r\n");
  EXPECT_THAT(home.run({"get", "-i", list}).errors, HasSubstr("already there"));
  EXPECT_THAT(home.films(), ElementsAre("a.avi"));
}

TEST_F(SentenceTest, AProxyThatWantsAPasswordIsNamedWithoutIt) {
  ScriptedServer proxy;
  proxy.always(Script().readRequest().send("HTTP/1.1 407 No\r\nContent-Length: 0\r\n\r\n").close());
  const std::string place = "127.0.0.1:" + std::to_string(proxy.port());
  home.setEnvironment("http_proxy", "http://anna:secret@" + place);
  const Nginx server;
  server.serve("a.avi", distinctBytes(5000));
  EXPECT_THAT(failureOf(server.url("/a.avi")),
              AllOf(HasSubstr("The proxy " + place), HasSubstr("407"), Not(HasSubstr("secret"))));
  for (const auto& entry : std::filesystem::recursive_directory_iterator(home.data())) {
    if (!entry.is_regular_file()) continue;
    EXPECT_THAT(support::readFile(entry.path()), Not(HasSubstr("secret"))) << entry.path();
  }
}

TEST_F(SentenceTest, AServerThatDoesNotAnswerTheQuestionForTheSizeIsSaid) {
  const Nginx server({.serverSnippet = "if ($request_method = HEAD) { return 405; }"});
  server.serve("a.avi", distinctBytes(5000));
  EXPECT_THAT(failureOf(server.url("/a.avi")),
              AllOf(HasSubstr("HEAD"), HasSubstr("ask the provider for a direct address")));
}

TEST_F(SentenceTest, AServerThatWantsAPasswordEvenForTheSizeIsSaid) {
  const Nginx server({.user = "anna", .password = "secret"});
  server.serve("a.avi", distinctBytes(5000));
  std::string url = server.url("/a.avi");
  url.insert(std::string("http://").size(), "anna:secret@");
  EXPECT_THAT(failureOf(url), AllOf(HasSubstr("HEAD"), Not(HasSubstr("secret"))));
}

TEST_F(SentenceTest, AServerThatSendsThePlayerOnToNoFilmIsNamed) {
  const Nginx last({.serverSnippet = "location / { return 302 file:///etc/passwd; }"});
  const Nginx first({.serverSnippet = "location / { return 302 " + last.url("/b.avi") + "; }"});
  const std::string sentence = failureOf(first.url("/a.avi"));
  EXPECT_THAT(sentence, AllOf(HasSubstr("localhost sends the player on to where no film is"),
                              Not(HasSubstr("file:"))));
}

TEST_F(SentenceTest, ARedirectThatNamesNoPlaceIsSaid) {
  ScriptedServer server;
  server.always(
      Script().readRequest().send("HTTP/1.1 302 Found\r\nContent-Length: 0\r\n\r\n").close());
  EXPECT_THAT(failureOf(server.url("/a.avi")), HasSubstr("without saying where to (302)"));
}

TEST_F(SentenceTest, AnAddressThatIsNotUtf8IsFetchedAsItIs) {
  const Nginx server;
  server.serve("\xE9t\xE9.avi", distinctBytes(5000));
  EXPECT_EQ(home.run({"get", server.url("/\xE9t\xE9.avi")}).status, 0);
  EXPECT_EQ(home.films().size(), 1u);
}

TEST_F(SentenceTest, AUserNameOrHeaderThatIsNotUtf8IsRefused) {
  EXPECT_THAT(refusalOf("http://\xFF:b@h/a.avi"), HasSubstr("not text in UTF-8"));
  EXPECT_THAT(refusalOf("http://a:%FF@h/a.avi"), HasSubstr("not text in UTF-8"));
  const PlayerResult result = home.run({"add", "--header", "A: \xFF", "http://h/a.avi"});
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.errors, HasSubstr("on one line of UTF-8"));
}

TEST_F(SentenceTest, AMissingModuleNamesTheFoldersSearched) {
  const PlayerResult result = home.run({"--plugins", folder.path(), "add", "http://h/a.avi"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr(folder.path().string()));
}

TEST_F(SentenceTest, TheFileTypesAreInTheHelp) {
  EXPECT_THAT(home.runForPeople({"--help"}).output, HasSubstr(".vesk, .xvid, .avi or .mkv"));
}

TEST_F(SentenceTest, TheExitStatusesAreInTheHelp) {
  EXPECT_THAT(home.runForPeople({"--help"}).output, HasSubstr("130  ended by Ctrl-C"));
}

TEST_F(SentenceTest, AWordThatIsNearlyAnOptionIsSuggested) {
  EXPECT_THAT(home.run({"get", "--limitrate", "5"}).errors, HasSubstr("\"--limit-rate\""));
  EXPECT_THAT(home.run({"resmue"}).errors, HasSubstr("\"resume\""));
}

/// What is wrong with a server's certificate.
class CertificateSentenceTest : public SentenceTest {
 protected:
  CertificateSentenceTest() {
    home.addOptions({"--cacert", folder.write("ca.pem", authority.certificatePem())});
  }

  std::string failureWith(const support::Identity& identity) {
    const Nginx server({.tls = identity});
    server.serve("a.avi", distinctBytes(5000));
    return failureOf(server.url("/a.avi"));
  }

  std::string failureWith(support::CertificateSpec spec) {
    return failureWith(support::pki::issue(authority, spec));
  }

  support::Identity authority = support::pki::authority("Films");
};

TEST_F(CertificateSentenceTest, EachFaultSaysSo) {
  using support::kDay;
  EXPECT_THAT(failureWith({.notBefore = -2 * kDay, .notAfter = -kDay}), HasSubstr("expired"));
  EXPECT_THAT(failureWith({.notBefore = kDay, .notAfter = 2 * kDay}), HasSubstr("not valid yet"));
  EXPECT_THAT(failureWith(support::pki::selfSigned()), HasSubstr("self-signed"));
  EXPECT_THAT(failureWith(support::pki::issue(support::pki::authority("Others"))),
              HasSubstr("an authority that is not known"));
  EXPECT_THAT(failureWith({.commonName = "films.example", .dnsNames = {"films.example"}}),
              HasSubstr("localhost"));
}

TEST_F(CertificateSentenceTest, AfterARedirectTheHostThatWasAskedIsNamed) {
  const Nginx server({.tls = support::pki::issue(authority, {.dnsNames = {"localhost"}})});
  server.serve("a.avi", distinctBytes(5000));
  const std::string target = server.url("/a.avi", "127.0.0.1");
  const Nginx front({.serverSnippet = "location / { return 302 " + target + "; }"});
  EXPECT_THAT(failureOf(front.url("/a.avi")), HasSubstr("127.0.0.1"));
}

}  // namespace
}  // namespace system_test
