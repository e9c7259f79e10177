#include "demo/TicketSealer.h"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace demo {

namespace {

constexpr int kNonceLength = 12;
constexpr int kTagLength = 16;

using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)>;

unsigned char* bytesOf(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

const unsigned char* bytesOf(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

void randomBytes(unsigned char* bytes, int count) {
  if (RAND_bytes(bytes, count) != 1) throw std::runtime_error("no random bytes to be had");
}

void check(int result) {
  if (result != 1) throw std::runtime_error("the ticket could not be sealed");
}

void swapAlphabet(std::string& text, char from1, char to1, char from2, char to2) {
  std::replace(text.begin(), text.end(), from1, to1);
  std::replace(text.begin(), text.end(), from2, to2);
}

}  // namespace

TicketSealer::Key TicketSealer::randomKey() {
  Key key;
  randomBytes(key.data(), static_cast<int>(key.size()));
  return key;
}

std::string TicketSealer::seal(const std::string& text) const {
  std::string sealed(kNonceLength + text.size() + kTagLength, '\0');
  unsigned char* nonce = bytesOf(sealed);
  randomBytes(nonce, kNonceLength);
  const CipherContext context(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
  int length = 0;
  check(EVP_EncryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, key_.data(), nonce));
  check(EVP_EncryptUpdate(context.get(), nonce + kNonceLength, &length, bytesOf(text),
                          static_cast<int>(text.size())));
  check(EVP_EncryptFinal_ex(context.get(), nonce + kNonceLength + length, &length));
  check(EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_GET_TAG, kTagLength,
                            nonce + kNonceLength + text.size()));
  return encodeBase64(sealed);
}

std::optional<std::string> TicketSealer::open(const std::string& sealedText) const {
  std::optional<std::string> sealed = decodeBase64(sealedText);
  if (!sealed || sealed->size() < kNonceLength + kTagLength) return std::nullopt;
  const std::size_t length = sealed->size() - kNonceLength - kTagLength;
  unsigned char* bytes = bytesOf(*sealed);
  std::string text(length, '\0');
  const CipherContext context(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
  int written = 0;
  const bool genuine =
      EVP_DecryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, key_.data(), bytes) == 1 &&
      EVP_DecryptUpdate(context.get(), bytesOf(text), &written, bytes + kNonceLength,
                        static_cast<int>(length)) == 1 &&
      EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_SET_TAG, kTagLength,
                          bytes + kNonceLength + length) == 1 &&
      EVP_DecryptFinal_ex(context.get(), bytesOf(text) + written, &written) == 1;
  return genuine ? std::optional(text) : std::nullopt;
}

std::string encodeBase64(const std::string& bytes) {
  std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
  const int length = EVP_EncodeBlock(bytesOf(text), bytesOf(bytes), static_cast<int>(bytes.size()));
  text.resize(static_cast<std::size_t>(length));
  swapAlphabet(text, '+', '-', '/', '_');
  return text;
}

std::optional<std::string> decodeBase64(const std::string& text) {
  if (text.size() % 4 != 0) return std::nullopt;
  std::string classic = text;
  swapAlphabet(classic, '-', '+', '_', '/');
  std::string bytes(text.size() / 4 * 3 + 1, '\0');
  const int length =
      EVP_DecodeBlock(bytesOf(bytes), bytesOf(classic), static_cast<int>(classic.size()));
  if (length < 0) return std::nullopt;
  const auto padding =
      std::count(text.end() - std::min<std::ptrdiff_t>(2, text.size()), text.end(), '=');
  bytes.resize(static_cast<std::size_t>(length) - static_cast<std::size_t>(padding));
  // The last character may carry bits that no byte takes: one text for the same bytes is enough.
  if (encodeBase64(bytes) != text) return std::nullopt;
  return bytes;
}

}  // namespace demo
