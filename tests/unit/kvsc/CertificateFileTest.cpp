#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "tests/support/ScriptedServer.h"
#include "tests/support/TempDir.h"
#include "tests/unit/kvsc/TlsTesting.h"

namespace {

using kvsc::HTTP_ERROR_FAILED;
using support::Identity;
using support::KeyKind;

/// Client certificate files that cannot be used: nothing may be sent to the server.
class CertificateFileTest : public testing::Test {
 protected:
  void useFile(const std::string& content) {
    client_.session().setCertFile(folder_.write("client.pem", content));
  }

  void useEncryptedKey() {
    useFile(identity_.certificatePem() + identity_.encryptedKeyPem("right"));
  }

  std::string failure() {
    const Outcome outcome = client_.get(server_.url());
    EXPECT_EQ(outcome.result, HTTP_ERROR_FAILED);
    EXPECT_EQ(server_.connectionCount(), 0u);
    return outcome.text;
  }

  const Identity identity_ = serverOf({.commonName = "my own", .key = KeyKind::kRsa});
  support::TempDir folder_;
  support::ScriptedServer server_{support::TlsSettings{.identity = serverOf()}};
  CheckingClient client_;
};

TEST_F(CertificateFileTest, AMissingFileFails) {
  client_.session().setCertFile(folder_ / "missing.pem");
  EXPECT_EQ(failure(), "Unable to load certificate file\n calling fopen(" +
                           client_.session().getCertFile() +
                           ", r) error:80000002:system library::No such file or directory\n"
                           "  error:10080002:BIO routines::system lib\n"
                           "  error:0A080002:SSL routines::system lib\n");
}

TEST_F(CertificateFileTest, AFileWithoutCertificateFails) {
  useFile(identity_.keyPem());
  EXPECT_EQ(failure(),
            "Unable to load certificate file\n"
            " Expecting: CERTIFICATE error:0480006C:PEM routines::no start line\n"
            "  error:0A080009:SSL routines::PEM lib\n");
}

TEST_F(CertificateFileTest, AFileWithoutKeyFails) {
  useFile(identity_.certificatePem());
  EXPECT_EQ(failure(),
            "Error loading private key from file\n"
            " No supported data to decode. Input type: PEM error:1E08010C:DECODER "
            "routines::unsupported\n"
            "  error:0A080009:SSL routines::PEM lib\n");
}

TEST_F(CertificateFileTest, AKeyOfAnotherCertificateFails) {
  useFile(identity_.certificatePem() +
          serverOf({.key = KeyKind::kRsa, .keyName = "other"}).keyPem());
  EXPECT_EQ(failure(),
            "Error loading private key from file\n"
            "  error:05800074:x509 certificate routines::key values mismatch\n");
}

TEST_F(CertificateFileTest, AnEncryptedKeyWithTheWrongPassPhraseFails) {
  useEncryptedKey();
  client_.session().setPassword("wrong");
  // One wrong phrase in a few hundred passes the padding check and fails as a malformed key.
  const std::string text = failure();
  EXPECT_TRUE(text.starts_with("Error loading private key from file\n")) << text;
  EXPECT_TRUE(text.ends_with("  error:0A080009:SSL routines::PEM lib\n")) << text;
}

TEST_F(CertificateFileTest, AnEncryptedKeyWithoutPassPhraseFails) {
  useEncryptedKey();
  const std::string text = failure();
  EXPECT_TRUE(text.starts_with("Error loading private key from file\n")) << text;
  EXPECT_TRUE(
      text.ends_with("  error:04800068:PEM routines::bad password read\n"
                     "  error:0A080009:SSL routines::PEM lib\n"))
      << text;
}

TEST_F(CertificateFileTest, TheFileIsNotReadWhenCertificatesAreNotChecked) {
  server_.always(support::Script::answer(support::okResponse("film")));
  client_.session().setCheckCertificate(false);
  client_.session().setCertFile(folder_ / "missing.pem");
  EXPECT_EQ(client_.get(server_.url()), kSuccess);
}

/// Everything that is shown on a terminal while `work` runs in a process of its own that has this
/// terminal and no other output.
std::string shownOnTerminal(const std::function<void()>& work) {
  int master = -1;
  const pid_t child = forkpty(&master, nullptr, nullptr, nullptr);
  if (child == 0) {
    const int nowhere = open("/dev/null", O_RDWR);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    const int terminal = open("/dev/tty", O_WRONLY);
    work();
    _exit(write(terminal, "done", 4) == 4 ? 0 : 1);
  }
  std::string shown;
  char piece[256];
  ssize_t got = 0;
  while (shown.find("done") == std::string::npos && (got = read(master, piece, sizeof piece)) > 0)
    shown.append(piece, static_cast<std::size_t>(got));
  close(master);
  waitpid(child, nullptr, 0);
  return shown;
}

TEST(NoPromptTest, NobodyIsAskedForAPassPhraseOnTheTerminal) {
  const support::TempDir folder;
  const Identity identity = serverOf({.key = KeyKind::kRsa});
  const std::string file =
      folder.write("client.pem", identity.certificatePem() + identity.encryptedKeyPem("right"));
  for (const char* password : {"", "wrong"})
    EXPECT_EQ(shownOnTerminal([&] {
                CheckingClient client;
                client.session().setCertFile(file);
                client.session().setPassword(password);
                client.get("https://localhost:1/");
              }),
              "done");
}

}  // namespace
