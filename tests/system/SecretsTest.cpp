#include <gmock/gmock.h>

#include <map>
#include <set>

#include "tests/support/ScriptedServer.h"
#include "tests/support/TempDir.h"
#include "tests/system/PlayerHome.h"

namespace system_test {
namespace {

namespace fs = std::filesystem;
using support::Script;
using support::ScriptedServer;
using testing::IsEmpty;
using testing::IsSupersetOf;

constexpr char kUserPassword[] = "planted-user-password";
constexpr char kHeader[] = "planted-header";
constexpr char kServerCookie[] = "planted-server-cookie";
constexpr char kProxyPassword[] = "planted-proxy-password";
constexpr char kTicketFile[] = "planted-ticket-file";
constexpr char kTicketRecord[] = "planted-ticket-record";
constexpr char kTemporaryUser[] = "planted-temporary-user";
constexpr char kTemporaryPassword[] = "planted-temporary-password";

const std::vector<std::string> kSecrets = {kUserPassword,  kHeader,           kServerCookie,
                                           kProxyPassword, kTicketFile,       kTicketRecord,
                                           kTemporaryUser, kTemporaryPassword};

/// A user whose films and tickets are full of secrets, and a server that lets the user know how
/// long a film is, but not have it.
class SecretsTest : public testing::Test {
 protected:
  using Places = std::set<std::string>;

  SecretsTest() {
    server_.onRequest([this](const std::string& request) { return answer(request); });
    home_.addOptions({"--diagnostics", "--services", server_.url("", "127.0.0.1")});
  }

  Script answer(const std::string& request) const {
    if (request.starts_with("POST") || request.starts_with("GET /ready")) {
      return Script().send(support::okResponse(answerOfServices(request)));
    }
    const std::string cookie = "Set-Cookie: s=" + std::string(kServerCookie) + "\r\n";
    return Script().send(request.starts_with("HEAD")
                             ? support::bareResponse("200 OK", cookie + "Content-Length: 9\r\n")
                             : support::bareResponse("403 Forbidden", cookie));
  }

  std::string answerOfServices(const std::string& request) const {
    if (request.starts_with("GET /ready")) return R"({"ready":true})";
    if (request.starts_with("POST /tickets/read")) {
      return R"({"records":[{"ticket":")" + std::string(kTicketRecord) +
             R"(","title":"Film","usageId":1}]})";
    }
    return R"({"success":true,"ticketId":7,"size":9,"rights":"","username":")" +
           std::string(kTemporaryUser) + R"(","password":")" + kTemporaryPassword + R"(","url":")" +
           server_.url("/film.mkv", "127.0.0.1") + "\"}";
  }

  /// Runs a command, for programs and for people, and keeps what it prints.
  void run(const std::vector<std::string>& arguments) {
    for (const PlayerResult& result : {home_.run(arguments), home_.runForPeople(arguments)}) {
      printed_ += result.output + result.errors;
    }
  }

  /// The files below the home that hold this text; those of the queue by one name.
  Places filesWith(const std::string& text) const {
    Places files;
    for (const auto& entry : fs::recursive_directory_iterator(home_.data().parent_path())) {
      if (!entry.is_regular_file()) continue;
      const bool isHeld = support::readFile(entry.path()).find(text) != std::string::npos;
      const std::string name = entry.path().filename();
      const bool isQueue = name.find("downloadmanager.xml") != std::string::npos;
      if (isHeld) files.insert(isQueue ? "queue" : name);
    }
    return files;
  }

  void expectKept(const std::map<std::string, Places>& allowed) const {
    for (const std::string& secret : kSecrets) {
      EXPECT_EQ(printed_.find(secret), std::string::npos) << secret << '\n' << printed_;
      const auto places = allowed.find(secret);
      EXPECT_THAT(places == allowed.end() ? Places() : places->second,
                  IsSupersetOf(filesWith(secret)))
          << secret;
    }
  }

  std::string sent() const {
    std::string all;
    for (const std::string& request : server_.requests()) all += request;
    return all;
  }

  ScriptedServer server_;
  support::TempDir folder_;
  PlayerHome home_;
  std::string printed_;
};

TEST_F(SecretsTest, OfAFilmStayWithItsOptions) {
  const std::string host = "127.0.0.1:" + std::to_string(server_.port());
  run({"get", "--tries", "1", "--header", "X-Club: " + std::string(kHeader),
       "http://anna:" + std::string(kUserPassword) + "@" + host + "/film.avi"});
  run({"list", "--long"});
  run({"retry", "1"});
  run({"get", "--tries", "1"});
  run({"explain", "http://anna:" + std::string(kUserPassword) + "@" + host + "/film.avi"});
  EXPECT_NE(sent().find(kHeader), std::string::npos) << "it was used";
  EXPECT_THAT(filesWith(kHeader), testing::ElementsAre("film-options.jsonl"));
  expectKept({{kUserPassword, {"film-options.jsonl"}}, {kHeader, {"film-options.jsonl"}}});
}

TEST_F(SecretsTest, OfATicketStayInTheQueue) {
  const auto ticket = folder_.write("t.tix", "VeskSealedTicket 1\n" + std::string(kTicketFile));
  run({"explain", ticket});
  run({"get", "--tries", "1", ticket});
  run({"list", "--long"});
  run({"retry", "1"});
  run({"get", "--tries", "1"});
  EXPECT_NE(sent().find("GET /film.mkv"), std::string::npos) << "it was used";
  expectKept({{kTicketRecord, {"queue"}}});
}

TEST_F(SecretsTest, OfAProxyStayInTheEnvironment) {
  ScriptedServer proxy;
  proxy.always(Script::answer(support::bareResponse("407 No")));
  home_.setEnvironment("http_proxy", "http://anna:" + std::string(kProxyPassword) +
                                         "@127.0.0.1:" + std::to_string(proxy.port()));
  run({"get", "--tries", "1", "http://films.test/film.avi"});
  run({"list", "--long"});
  EXPECT_GT(proxy.connectionCount(), 0u) << "it was used";
  expectKept({});
}

TEST_F(SecretsTest, AreInNoFileThatOthersMayRead) {
  const auto ticket = folder_.write("t.tix", "VeskSealedTicket 1\nx");
  run({"get", "--tries", "1", ticket});
  for (const auto& entry : fs::recursive_directory_iterator(home_.data())) {
    const fs::perms others = fs::perms::group_all | fs::perms::others_all;
    EXPECT_EQ(entry.symlink_status().permissions() & others, fs::perms::none) << entry.path();
  }
}

}  // namespace
}  // namespace system_test
