#include "tests/support/TestPki.h"

#include <arpa/inet.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>

#include <atomic>
#include <ctime>
#include <map>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "tests/support/TempDir.h"

namespace support {
namespace {

// Throws with the library's own words when a call has failed.
void require(bool done, const char* what) {
  if (done) return;
  char text[256];
  ERR_error_string_n(ERR_get_error(), text, sizeof text);
  ERR_clear_error();
  throw std::runtime_error(std::string(what) + ": " + text);
}

EVP_PKEY* newKey(KeyKind kind) {
  if (kind == KeyKind::kEc) return EVP_EC_gen("P-256");
  return EVP_RSA_gen(kind == KeyKind::kRsa ? 2048U : 1024U);
}

struct BioDeleter {
  void operator()(BIO* bio) const { BIO_free_all(bio); }
};
using MemoryBio = std::unique_ptr<BIO, BioDeleter>;

MemoryBio memoryBio() {
  MemoryBio bio(BIO_new(BIO_s_mem()));
  require(bio != nullptr, "BIO_new");
  return bio;
}

std::string textOf(const MemoryBio& bio) {
  char* data = nullptr;
  const long length = BIO_get_mem_data(bio.get(), &data);
  return {data, static_cast<std::size_t>(length)};
}

// A reader without a callback of its own would ask at the terminal.
int refusePassPhrase(char*, int, int, void*) { return -1; }

void addEntry(X509_NAME* name, int nid, const std::string& value) {
  require(X509_NAME_add_entry_by_NID(name, nid, MBSTRING_UTF8,
                                     reinterpret_cast<const unsigned char*>(value.data()),
                                     static_cast<int>(value.size()), -1, 0) == 1,
          "X509_NAME_add_entry_by_NID");
}

void setSubject(X509* certificate, const CertificateSpec& spec) {
  X509_NAME* name = X509_get_subject_name(certificate);
  if (!spec.organization.empty()) addEntry(name, NID_organizationName, spec.organization);
  if (spec.commonName) addEntry(name, NID_commonName, *spec.commonName);
}

GENERAL_NAME* generalName(int type, const std::string& bytes) {
  ASN1_STRING* value =
      ASN1_STRING_type_new(type == GEN_DNS ? V_ASN1_IA5STRING : V_ASN1_OCTET_STRING);
  require(value != nullptr, "ASN1_STRING_type_new");
  ASN1_STRING_set(value, bytes.data(), static_cast<int>(bytes.size()));
  GENERAL_NAME* name = GENERAL_NAME_new();
  GENERAL_NAME_set0_value(name, type, value);
  return name;
}

std::string addressBytes(const std::string& text) {
  in_addr address{};
  require(inet_pton(AF_INET, text.c_str(), &address) == 1, "inet_pton");
  return {reinterpret_cast<const char*>(&address), sizeof address};
}

// Built from parts, not from configuration text, so that a name may hold any byte.
void addAlternativeNames(X509* certificate, const CertificateSpec& spec) {
  if (spec.dnsNames.empty() && spec.addresses.empty()) return;
  const std::unique_ptr<GENERAL_NAMES, decltype(&GENERAL_NAMES_free)> names(
      sk_GENERAL_NAME_new_null(), &GENERAL_NAMES_free);
  for (const std::string& name : spec.dnsNames)
    sk_GENERAL_NAME_push(names.get(), generalName(GEN_DNS, name));
  for (const std::string& address : spec.addresses)
    sk_GENERAL_NAME_push(names.get(), generalName(GEN_IPADD, addressBytes(address)));
  require(X509_add1_ext_i2d(certificate, NID_subject_alt_name, names.get(), 0, 0) == 1,
          "X509_add1_ext_i2d");
}

void addExtension(X509* certificate, X509* issuer, int nid, const char* value) {
  X509V3_CTX context;
  X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
  const std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)> extension(
      X509V3_EXT_conf_nid(nullptr, &context, nid, value), &X509_EXTENSION_free);
  require(extension != nullptr, "X509V3_EXT_conf_nid");
  require(X509_add_ext(certificate, extension.get(), -1) == 1, "X509_add_ext");
}

// Serial numbers must differ between processes too, or a list made by one revokes for another.
long nextSerial() {
  static std::atomic<long> counter{static_cast<long>(std::time(nullptr)) << 20};
  return ++counter;
}

std::time_t fromNow(Offset offset) {
  return std::time(nullptr) + std::chrono::seconds(offset).count();
}

Identity bare(const CertificateSpec& spec) {
  const std::string keyName =
      !spec.keyName.empty() ? spec.keyName : (spec.authority ? "authority" : "leaf");
  Identity made{Certificate(X509_new(), &X509_free), pki::keyNamed(spec.key, keyName), {}};
  X509* certificate = made.certificate.get();
  X509_set_version(certificate, X509_VERSION_3);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate),
                   spec.serial != 0 ? spec.serial : nextSerial());
  ASN1_TIME_set(X509_getm_notBefore(certificate), fromNow(spec.notBefore));
  ASN1_TIME_set(X509_getm_notAfter(certificate), fromNow(spec.notAfter));
  X509_set_pubkey(certificate, made.key.get());
  setSubject(certificate, spec);
  return made;
}

void sealWith(const Identity& made, X509* issuer, EVP_PKEY* key, const CertificateSpec& spec) {
  X509* certificate = made.certificate.get();
  X509_set_issuer_name(certificate, X509_get_subject_name(issuer));
  addExtension(certificate, issuer, NID_basic_constraints,
               spec.authority ? "critical,CA:TRUE" : "critical,CA:FALSE");
  addExtension(certificate, issuer, NID_subject_key_identifier, "hash");
  addAlternativeNames(certificate, spec);
  require(X509_sign(certificate, key, EVP_sha256()) != 0, "X509_sign");
}

CertificateSpec authoritySpec(const std::string& commonName, KeyKind kind) {
  CertificateSpec spec;
  spec.commonName = commonName;
  spec.authority = true;
  spec.key = kind;
  spec.keyName = "authority " + commonName;
  return spec;
}

void revoke(X509_CRL* list, long serial) {
  X509_REVOKED* entry = X509_REVOKED_new();
  const std::unique_ptr<ASN1_INTEGER, decltype(&ASN1_INTEGER_free)> number(ASN1_INTEGER_new(),
                                                                           &ASN1_INTEGER_free);
  const std::unique_ptr<ASN1_TIME, decltype(&ASN1_TIME_free)> when(
      ASN1_TIME_set(nullptr, fromNow(-kDay)), &ASN1_TIME_free);
  ASN1_INTEGER_set(number.get(), serial);
  X509_REVOKED_set_serialNumber(entry, number.get());
  X509_REVOKED_set_revocationDate(entry, when.get());
  require(X509_CRL_add0_revoked(list, entry) == 1, "X509_CRL_add0_revoked");
}

void setTimes(X509_CRL* list, const CrlSpec& spec) {
  const std::unique_ptr<ASN1_TIME, decltype(&ASN1_TIME_free)> last(
      ASN1_TIME_set(nullptr, fromNow(spec.lastUpdate)), &ASN1_TIME_free);
  X509_CRL_set1_lastUpdate(list, last.get());
  if (!spec.nextUpdate) return;
  const std::unique_ptr<ASN1_TIME, decltype(&ASN1_TIME_free)> next(
      ASN1_TIME_set(nullptr, fromNow(*spec.nextUpdate)), &ASN1_TIME_free);
  X509_CRL_set1_nextUpdate(list, next.get());
}

std::string certificateText(X509* certificate) {
  const MemoryBio bio = memoryBio();
  require(PEM_write_bio_X509(bio.get(), certificate) == 1, "PEM_write_bio_X509");
  return textOf(bio);
}

}  // namespace

std::string Identity::certificatePem() const { return certificateText(certificate.get()); }

std::string Identity::chainPem() const {
  std::string text = certificatePem();
  for (const Certificate& link : chain) text += certificateText(link.get());
  return text;
}

std::string Identity::keyPem() const {
  const MemoryBio bio = memoryBio();
  require(PEM_write_bio_PKCS8PrivateKey(bio.get(), key.get(), nullptr, nullptr, 0, nullptr,
                                        nullptr) == 1,
          "PEM_write_bio_PKCS8PrivateKey");
  return textOf(bio);
}

std::string Identity::encryptedKeyPem(const std::string& passPhrase) const {
  const MemoryBio bio = memoryBio();
  require(PEM_write_bio_PKCS8PrivateKey(bio.get(), key.get(), EVP_aes_128_cbc(), passPhrase.data(),
                                        static_cast<int>(passPhrase.size()), nullptr, nullptr) == 1,
          "PEM_write_bio_PKCS8PrivateKey");
  return textOf(bio);
}

std::string Identity::subject() const {
  char text[256];
  return X509_NAME_oneline(X509_get_subject_name(certificate.get()), text, sizeof text);
}

long Identity::serial() const {
  return ASN1_INTEGER_get(X509_get0_serialNumber(certificate.get()));
}

namespace pki {

Key keyNamed(KeyKind kind, const std::string& name) {
  static std::mutex mutex;
  static std::map<std::pair<KeyKind, std::string>, Key> keys;
  const std::lock_guard lock(mutex);
  Key& key = keys[{kind, name}];
  if (!key) {
    key = Key(newKey(kind), &EVP_PKEY_free);
    require(key != nullptr, "key generation");
  }
  return key;
}

Identity selfSigned(const CertificateSpec& spec) {
  Identity made = bare(spec);
  sealWith(made, made.certificate.get(), made.key.get(), spec);
  return made;
}

Identity authority(const std::string& commonName, KeyKind kind) {
  return selfSigned(authoritySpec(commonName, kind));
}

Identity issue(const Identity& issuer, const CertificateSpec& spec) {
  Identity made = bare(spec);
  sealWith(made, issuer.certificate.get(), issuer.key.get(), spec);
  made.chain = issuer.chain;
  return made;
}

Identity intermediate(const Identity& issuer, const std::string& commonName) {
  Identity made = issue(issuer, authoritySpec(commonName, KeyKind::kEc));
  made.chain.insert(made.chain.begin(), made.certificate);
  return made;
}

Identity forgerOf(const Identity& authority) {
  const bool rsa = EVP_PKEY_is_a(authority.key.get(), "RSA") == 1;
  const CertificateSpec spec = authoritySpec("Forger", rsa ? KeyKind::kRsa : KeyKind::kEc);
  Identity made = bare(spec);
  X509_set_subject_name(made.certificate.get(), X509_get_subject_name(authority.certificate.get()));
  sealWith(made, made.certificate.get(), made.key.get(), spec);
  return made;
}

std::string revocationList(const CrlSpec& spec) {
  const std::unique_ptr<X509_CRL, decltype(&X509_CRL_free)> list(X509_CRL_new(), &X509_CRL_free);
  X509_CRL_set_version(list.get(), X509_CRL_VERSION_2);
  X509_CRL_set_issuer_name(list.get(), X509_get_subject_name(spec.issuer.certificate.get()));
  setTimes(list.get(), spec);
  for (const long serial : spec.revoked) revoke(list.get(), serial);
  X509_CRL_sort(list.get());
  EVP_PKEY* key = spec.signedBy ? spec.signedBy.get() : spec.issuer.key.get();
  require(X509_CRL_sign(list.get(), key, EVP_sha256()) != 0, "X509_CRL_sign");
  const MemoryBio bio = memoryBio();
  require(PEM_write_bio_X509_CRL(bio.get(), list.get()) == 1, "PEM_write_bio_X509_CRL");
  return textOf(bio);
}

Identity fromPem(const std::string& certificatePem, const std::string& keyPem) {
  const MemoryBio certificateBio = memoryBio();
  const MemoryBio keyBio = memoryBio();
  BIO_write(certificateBio.get(), certificatePem.data(), static_cast<int>(certificatePem.size()));
  BIO_write(keyBio.get(), keyPem.data(), static_cast<int>(keyPem.size()));
  X509* certificate = PEM_read_bio_X509(certificateBio.get(), nullptr, &refusePassPhrase, nullptr);
  require(certificate != nullptr, "PEM_read_bio_X509");
  Identity read{Certificate(certificate, &X509_free), {}, {}};
  EVP_PKEY* key = PEM_read_bio_PrivateKey(keyBio.get(), nullptr, &refusePassPhrase, nullptr);
  require(key != nullptr, "PEM_read_bio_PrivateKey");
  read.key = Key(key, &EVP_PKEY_free);
  return read;
}

Identity fromFiles(const std::filesystem::path& certificate, const std::filesystem::path& key) {
  return fromPem(readFile(certificate), readFile(key));
}

}  // namespace pki
}  // namespace support
