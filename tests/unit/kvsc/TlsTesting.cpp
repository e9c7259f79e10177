#include "tests/unit/kvsc/TlsTesting.h"

#include <fcntl.h>

#include <ostream>
#include <utility>

#include "tests/support/DevelopmentPki.h"
#include "tests/support/Loopback.h"

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  return out << outcome.result << " \"" << outcome.text << '"';
}

CheckingClient::CheckingClient(const std::string& environment) : client_(environment) {
  session_.setCheckCertificate(true);
  client_.setBodyCallback(&CheckingClient::keepBody);
  client_.setBodyContext(this);
}

std::size_t CheckingClient::keepBody(void* data, std::size_t size, std::size_t count,
                                     void* context) {
  static_cast<CheckingClient*>(context)->body_.append(static_cast<char*>(data), size * count);
  return size * count;
}

Outcome CheckingClient::get(const std::string& url) {
  body_.clear();
  client_.setErrorString("");
  kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_FAILED;
  const kvsc::SSLMethodProtocolType method = session_.getSslMethod();
  client_.httpGet(url, 0, &result, &session_, "", "", method);
  return {result, client_.getErrorString()};
}

int LoopbackDialer::dial(const std::string&, const std::string&, kvsc::Waiter&) {
  support::UniqueFd fd = support::connectToLoopback(port_);
  if (!fd) return -1;
  fcntl(fd.get(), F_SETFL, fcntl(fd.get(), F_GETFL) | O_NONBLOCK);
  return fd.release();
}

support::Identity serverOf(const support::CertificateSpec& spec, const std::string& environment) {
  return support::pki::issue(support::development::authorityOf(environment), spec);
}

support::Identity serverAuthority() { return support::development::testAuthority(); }
