#include "kvsc/CertificateCheck.h"

#include <array>
#include <memory>
#include <string_view>

#include "kvsc/OpenSsl.h"

namespace kvsc {
namespace {

struct NamesFree {
  void operator()(GENERAL_NAMES* names) const { GENERAL_NAMES_free(names); }
};
using Names = std::unique_ptr<GENERAL_NAMES, NamesFree>;

// With the length: a zero byte inside must not end a comparison.
std::string_view bytesOf(const ASN1_STRING* text) {
  const auto* data = reinterpret_cast<const char*>(ASN1_STRING_get0_data(text));
  return {data, static_cast<std::size_t>(ASN1_STRING_length(text))};
}

bool containsDnsName(const GENERAL_NAMES* names, const std::string& host) {
  for (int i = 0; i < sk_GENERAL_NAME_num(names); ++i) {
    const GENERAL_NAME* name = sk_GENERAL_NAME_value(names, i);
    if (name->type == GEN_DNS && bytesOf(name->d.dNSName) == host) return true;
  }
  return false;
}

CrlVerdict refuse(const std::string& text, int storeError = X509_V_OK) {
  return CrlVerdict{false, text, storeError};
}

// Checks the list that the certificate itself has issued.
CrlVerdict checkOwnList(X509* certificate, X509_CRL* crl, const std::string& issuer) {
  EVP_PKEY* key = X509_get0_pubkey(certificate);
  if (key == nullptr || X509_CRL_verify(crl, key) != 1) {
    return refuse("Unable to verify signature on CRL issued by " + issuer);
  }
  const ASN1_TIME* next = X509_CRL_get0_nextUpdate(crl);
  const int order = next != nullptr ? X509_cmp_current_time(next) : 0;
  if (order == 0) {
    return refuse("Unable to get the next CRL update for CRL issued by " + issuer,
                  X509_V_ERR_ERROR_IN_CRL_NEXT_UPDATE_FIELD);
  }
  if (order < 0) return refuse("Expired CRL issued by " + issuer, X509_V_ERR_CRL_HAS_EXPIRED);
  return CrlVerdict();
}

bool isRevoked(const X509* certificate, X509_CRL* crl) {
  STACK_OF(X509_REVOKED)* revoked = X509_CRL_get_REVOKED(crl);
  const ASN1_INTEGER* serial = X509_get0_serialNumber(certificate);
  for (int i = 0; i < sk_X509_REVOKED_num(revoked); ++i) {
    const X509_REVOKED* entry = sk_X509_REVOKED_value(revoked, i);
    if (ASN1_INTEGER_cmp(X509_REVOKED_get0_serialNumber(entry), serial) == 0) return true;
  }
  return false;
}

}  // namespace

CrlVerdict checkAgainstCrls(X509* certificate, X509_STORE* store) {
  const X509_NAME* subject = certificate ? X509_get_subject_name(certificate) : nullptr;
  const X509_NAME* issuer = certificate ? X509_get_issuer_name(certificate) : nullptr;
  if (subject == nullptr || issuer == nullptr) {
    return CrlVerdict{true, "Current Certificate, subject or issuer is NULL in crlCheck", 0};
  }
  if (const CrlPtr own = newestCrlOf(store, subject)) {
    CrlVerdict verdict = checkOwnList(certificate, own.get(), nameLine(issuer));
    if (!verdict.accepted) return verdict;
  }
  const CrlPtr list = newestCrlOf(store, issuer);
  if (!list || !isRevoked(certificate, list.get())) return CrlVerdict();
  return refuse(nameLine(subject) + " was revoked by " + nameLine(issuer), X509_V_ERR_CERT_REVOKED);
}

bool hasDnsName(const X509* certificate, const std::string& host) {
  for (int place = -1;
       (place = X509_get_ext_by_NID(certificate, NID_subject_alt_name, place)) >= 0;) {
    X509_EXTENSION* extension = X509_get_ext(certificate, place);
    const Names names(static_cast<GENERAL_NAMES*>(X509V3_EXT_d2i(extension)));
    if (names && containsDnsName(names.get(), host)) return true;
  }
  return false;
}

bool hasOtherCommonName(const X509* certificate, const std::string& host) {
  const X509_NAME* subject = X509_get_subject_name(certificate);
  const int place = subject ? X509_NAME_get_index_by_NID(subject, NID_commonName, -1) : -1;
  if (place < 0) return false;
  return bytesOf(X509_NAME_ENTRY_get_data(X509_NAME_get_entry(subject, place))) != host;
}

bool isForHost(const X509* certificate, const std::string& host) {
  return hasDnsName(certificate, host) || !hasOtherCommonName(certificate, host);
}

std::string nameLine(const X509_NAME* name) {
  std::array<char, 256> line{};
  X509_NAME_oneline(name, line.data(), static_cast<int>(line.size()));
  return line.data();
}

std::string refusalText(X509_STORE_CTX* context) {
  const X509* certificate = X509_STORE_CTX_get_current_cert(context);
  const int error = X509_STORE_CTX_get_error(context);
  const std::string issuer = certificate ? nameLine(X509_get_issuer_name(certificate)) : "";
  const std::string subject = certificate ? nameLine(X509_get_subject_name(certificate)) : "";
  return "-Error with certificate at depth: " +
         std::to_string(X509_STORE_CTX_get_error_depth(context)) + " issuer = " + issuer +
         " subject = " + subject + " err: " + std::to_string(error) + " " +
         X509_verify_cert_error_string(error);
}

}  // namespace kvsc
