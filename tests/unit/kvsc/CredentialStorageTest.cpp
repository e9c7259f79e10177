// The credentials cannot be found by searching the built program.
#include <gtest/gtest.h>
#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "tests/support/TempDir.h"

namespace {

constexpr std::size_t kPieceLength = 16;

/// Finds pieces of one length in a file of any size in one pass.
class PieceFinder {
 public:
  void add(std::string_view piece) {
    pieces_.emplace(piece.substr(0, kPieceLength));
    starts_[startOf(piece.data())] = true;
  }

  /// The first piece that occurs, or nothing.
  std::string find(const std::string& content) const {
    for (std::size_t i = 0; i + kPieceLength <= content.size(); ++i) {
      if (!starts_[startOf(&content[i])]) continue;
      const std::string piece = content.substr(i, kPieceLength);
      if (pieces_.count(piece) > 0) return piece;
    }
    return {};
  }

 private:
  static std::size_t startOf(const char* piece) {
    return static_cast<unsigned char>(piece[0]) * 256U + static_cast<unsigned char>(piece[1]);
  }

  std::unordered_set<std::string> pieces_;
  std::vector<bool> starts_ = std::vector<bool>(65536);
};

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// The bytes that a PEM text stands for.
std::string decoded(const std::string& text) {
  const std::unique_ptr<BIO, int (*)(BIO*)> bio(
      BIO_new_mem_buf(text.data(), static_cast<int>(text.size())), BIO_free);
  char* name = nullptr;
  char* header = nullptr;
  unsigned char* data = nullptr;
  long length = 0;
  EXPECT_EQ(PEM_read_bio(bio.get(), &name, &header, &data, &length), 1);
  const std::string bytes(reinterpret_cast<char*>(data), static_cast<std::size_t>(length));
  OPENSSL_free(name);
  OPENSSL_free(header);
  OPENSSL_free(data);
  return bytes;
}

std::vector<std::string> wordsOfSubject(const std::string& text) {
  const std::string der = decoded(text);
  const auto* data = reinterpret_cast<const unsigned char*>(der.data());
  const std::unique_ptr<X509, void (*)(X509*)> certificate(
      d2i_X509(nullptr, &data, static_cast<long>(der.size())), X509_free);
  std::vector<std::string> words;
  const X509_NAME* subject = X509_get_subject_name(certificate.get());
  for (int i = 0; i < X509_NAME_entry_count(subject); ++i) {
    const ASN1_STRING* value = X509_NAME_ENTRY_get_data(X509_NAME_get_entry(subject, i));
    std::istringstream stream(reinterpret_cast<const char*>(ASN1_STRING_get0_data(value)));
    for (std::string word; stream >> word;) words.push_back(word);
  }
  return words;
}

/// What must not be found: lines and their decoded bytes as pieces, words and markers as they are.
class CredentialStorage : public testing::Test {
 protected:
  CredentialStorage() {
    for (const auto& entry : std::filesystem::directory_iterator(VESK_BUILT_CREDENTIALS)) {
      if (entry.path().extension() != ".pem") continue;
      texts_.push_back(support::readFile(entry.path()));
      addTraces(texts_.back());
    }
  }

  /// What of the credentials the content shows, or nothing.
  std::string traceIn(const std::string& content) const {
    for (const std::string& word : words_) {
      if (content.find(word) != std::string::npos) return word;
    }
    return pieces_.find(content);
  }

  std::vector<std::string> texts_;

 private:
  void addTraces(const std::string& text) {
    for (const std::string& line : linesOf(text)) {
      if (line.size() >= kPieceLength) pieces_.add(line);
    }
    const std::string bytes = decoded(text);
    for (std::size_t i = 0; i + kPieceLength <= bytes.size(); i += kPieceLength) {
      pieces_.add(std::string_view(bytes).substr(i));
    }
    if (text.find("CERTIFICATE") == std::string::npos) return;
    for (const std::string& word : wordsOfSubject(text)) words_.insert(word);
  }

  PieceFinder pieces_;
  std::unordered_set<std::string> words_ = {"-----BEGIN", "-----END", "PRIVATE KEY"};
};

TEST_F(CredentialStorage, IsSearchedForEverythingThatTheTextsShow) {
  ASSERT_EQ(texts_.size(), 14U);
  for (const std::string& text : texts_) {
    EXPECT_NE(traceIn(text), "");
    EXPECT_NE(traceIn("xyz" + linesOf(text)[5]), "");
    EXPECT_NE(traceIn("xyz" + decoded(text)), "");
  }
  EXPECT_EQ(traceIn("xyz"), "");
}

TEST_F(CredentialStorage, ShowsNothingInTheBuiltFiles) {
  for (const char* file : {VESK_SEARCHED_FILES}) {
    const std::string content = support::readFile(file);
    EXPECT_GT(content.size(), 21000U) << file;
    EXPECT_EQ(traceIn(content), "") << file;
  }
}

}  // namespace
