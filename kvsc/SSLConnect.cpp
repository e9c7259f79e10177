#include "kvsc/SSLConnect.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

#include "kvsc/HeaderLine.h"
#include "kvsc/HttpTime.h"
#include "kvsc/OpenSsl.h"

namespace kvsc {
namespace {

constexpr const char* kNoMemoryForHeader = "Unable to get memory for a response header";

// An entry with its code, which the record itself does not hold.
struct TakenError {
  unsigned long code = 0;
  std::unique_ptr<SSLError> error;
};

TakenError takeNextError() {
  const char* file = "";
  const char* data = "";
  int line = 0;
  int flags = 0;
  const unsigned long code = takeError(&file, &line, &data, &flags);
  if (code == 0) return TakenError();
  std::array<char, 257> text{};
  ERR_error_string_n(code, text.data(), text.size());
  auto error = std::make_unique<SSLError>();
  error->setData((flags & ERR_TXT_STRING) != 0 ? data : "");
  error->setFileName(file);
  error->setLineNumber(line);
  error->setHumanReadable(text.data());
  const std::string report = "error code: " + std::to_string(code) + " in " + file +
                             " line: " + std::to_string(line) + " data: " + error->getData() +
                             " flags: " + std::to_string(flags) +
                             "\nhuman readable: " + error->getHumanReadable() + "\n";
  std::fputs(report.c_str(), stdout);
  return TakenError{code, std::move(error)};
}

}  // namespace

SSLConnect::SSLConnect(const std::string& environment) : environment_(environment) {
  SSLConnect::init();
  countConnection(1);
}

SSLConnect::~SSLConnect() {
  countConnection(-1);
  releaseThreadErrors();
}

void SSLConnect::close(SSLSession* session) {
  const SslContextPtr context(session->getSslContext());
  session->setSslContext(nullptr);
}

void SSLConnect::freeConnection(BIO* connect, bool shutDown) {
  const BioPtr owned(connect);
  // A BIO without a descriptor answers 0 when it is asked for one.
  if (connect == nullptr || !shutDown || BIO_find_type(connect, BIO_TYPE_DESCRIPTOR) == nullptr)
    return;
  const int fd = static_cast<int>(BIO_get_fd(connect, nullptr));
  if (fd >= 0) ::shutdown(fd, SHUT_RDWR);
}

int SSLConnect::pem_passwd_cb(char* buf, int size, int, void* userdata) {
  if (userdata == nullptr || buf == nullptr || size < 1) return -1;
  const auto capacity = static_cast<std::size_t>(size);
  std::strncpy(buf, static_cast<const char*>(userdata), capacity);
  buf[capacity - 1] = '\0';
  return static_cast<int>(std::strlen(buf));
}

std::vector<SSLError*> SSLConnect::checkErrors() {
  try {
    std::vector<std::unique_ptr<SSLError>> errors;
    std::string summary;
    for (TakenError taken = takeNextError(); taken.error; taken = takeNextError()) {
      summary += " " + taken.error->getData() + " " + taken.error->getHumanReadable() + "\n";
      errors.push_back(std::move(taken.error));
    }
    std::vector<SSLError*> handedOver(errors.size());
    if (!errors.empty()) errorString_ += "\n" + summary;
    std::transform(errors.begin(), errors.end(), handedOver.begin(),
                   [](std::unique_ptr<SSLError>& error) { return error.release(); });
    return handedOver;
  } catch (...) {
    ERR_clear_error();  // there is no memory to report them
    return {};
  }
}

void SSLConnect::collectErrors() {
  for (SSLError* error : checkErrors()) delete error;
}

void SSLConnect::parseHeaderLine(char* line, int length) {
  if (line == nullptr || length <= 0) return;
  const std::string_view text(line, static_cast<std::size_t>(length));
  try {
    if (isStatusLine(text)) {
      responseCode_ = statusCodeIn(text).value_or(responseCode_);
    } else if (auto field = headerFieldIn(text)) {
      responseHeaders_[field->name] = field->value;
    }
  } catch (...) {
    storeText(kNoMemoryForHeader);
  }
}

std::string SSLConnect::getResponseValue(const std::string& name) const {
  const auto found = responseHeaders_.find(name);
  return found != responseHeaders_.end() ? found->second : std::string();
}

time_t SSLConnect::convertHttpTime(const std::string& text) const { return parseHttpTime(text); }

bool SSLConnect::fail(const char* text) {
  errorString_ = text;
  return false;
}

void SSLConnect::storeText(const char* text) noexcept {
  try {
    errorString_ = text;
  } catch (...) {
    // Without memory for the text, the result alone must do.
  }
}

int SSLConnect::reportException(const char* text) noexcept {
  storeText(text);
  try {
    if (errorCallback_ != nullptr) errorCallback_(text);
  } catch (...) {
    // The callback takes its text by value, which may need memory too.
  }
  return 0;
}

void SSLConnect::addDownloaded(int bytes) {
  const auto total = static_cast<std::uint32_t>(totalDownloaded_);
  totalDownloaded_ = static_cast<std::int32_t>(total + static_cast<std::uint32_t>(bytes));
}

}  // namespace kvsc
