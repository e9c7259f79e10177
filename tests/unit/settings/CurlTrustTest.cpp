#include <gtest/gtest.h>
#include <openssl/x509.h>

#include <array>
#include <cstdio>
#include <memory>

#include "playerx/settings/CurlTrust.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TempDir.h"
#include "tests/support/TestPki.h"

namespace playerx {
namespace {

using support::Script;
using support::ScriptedServer;
namespace pki = support::pki;

/// A file and a folder with an authority in them that stand for the system's, and a server that it
/// vouches for.
class CurlTrustTest : public testing::Test {
 protected:
  CurlTrustTest() : server_(support::TlsSettings{.identity = pki::issue(system_)}) {
    server_.always(Script::answer(support::okResponse("film")));
  }

  /// The authority in a file under the name by which it is looked up in a folder.
  static std::string writeHashed(const support::TempDir& folder, const support::Identity& who) {
    std::array<char, 16> name{};
    std::snprintf(name.data(), name.size(), "%08lx.0",
                  X509_subject_name_hash(who.certificate.get()));
    return folder.write(name.data(), who.certificatePem());
  }

  CURLcode fetch(const TrustedAuthorities& chosen, bool asProxy = false) const {
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl(curl_easy_init(),
                                                                   curl_easy_cleanup);
    curl_easy_setopt(curl.get(), CURLOPT_CAINFO, systemFile_.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_CAPATH, systemFolder_.path().c_str());
    curl_easy_setopt(curl.get(), CURLOPT_PROXY_CAINFO, systemFile_.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_PROXY_CAPATH, systemFolder_.path().c_str());
    const std::string plain = "http://films.test/a.avi";
    curl_easy_setopt(curl.get(), CURLOPT_URL, asProxy ? plain.c_str() : server_.url().c_str());
    curl_easy_setopt(curl.get(), CURLOPT_PROXY, asProxy ? server_.url().c_str() : "");
    curl_easy_setopt(curl.get(), CURLOPT_NOBODY, 1L);
    applyTrust(curl.get(), chosen);
    return curl_easy_perform(curl.get());
  }

  const support::Identity system_ = pki::authority("System");
  const support::Identity chosen_ = pki::authority("Chosen");
  const support::TempDir systemFolder_;
  const std::string systemFile_ = writeHashed(systemFolder_, system_);
  const support::TempDir chosenFolder_;
  const std::string chosenFile_ = writeHashed(chosenFolder_, chosen_);
  ScriptedServer server_;
};

TEST_F(CurlTrustTest, WithoutAChoiceTheSystemIsTrusted) {
  EXPECT_EQ(fetch({}), CURLE_OK);
  EXPECT_EQ(fetch({}, true), CURLE_OK);
}

TEST_F(CurlTrustTest, AChosenFileExcludesTheSystem) {
  EXPECT_EQ(fetch({systemFile_, ""}), CURLE_OK);
  EXPECT_EQ(fetch({chosenFile_, ""}), CURLE_PEER_FAILED_VERIFICATION);
}

TEST_F(CurlTrustTest, AChosenFolderExcludesTheSystem) {
  EXPECT_EQ(fetch({"", systemFolder_.path()}), CURLE_OK);
  EXPECT_EQ(fetch({"", chosenFolder_.path()}), CURLE_PEER_FAILED_VERIFICATION);
}

TEST_F(CurlTrustTest, FileWithFolderAreTrustedTogether) {
  EXPECT_EQ(fetch({chosenFile_, systemFolder_.path()}), CURLE_OK);
  EXPECT_EQ(fetch({systemFile_, chosenFolder_.path()}), CURLE_OK);
}

TEST_F(CurlTrustTest, AProxyIsHeldToTheSameChoice) {
  EXPECT_EQ(fetch({systemFile_, ""}, true), CURLE_OK);
  EXPECT_EQ(fetch({chosenFile_, ""}, true), CURLE_PEER_FAILED_VERIFICATION);
  EXPECT_EQ(fetch({"", chosenFolder_.path()}, true), CURLE_PEER_FAILED_VERIFICATION);
}

}  // namespace
}  // namespace playerx
