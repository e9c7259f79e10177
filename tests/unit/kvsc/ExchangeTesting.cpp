#include "tests/unit/kvsc/ExchangeTesting.h"

#include <sys/socket.h>

#include <array>
#include <numeric>

const char* const kRedirectRefused = "Redirection url is not defined or redirect count exceeded.";

namespace {

std::string textOf(void* data, std::size_t size, std::size_t count) {
  EXPECT_EQ(size, 1U);
  return std::string(static_cast<char*>(data), size * count);
}

std::size_t keepLine(void* data, std::size_t size, std::size_t count, void* received) {
  static_cast<Received*>(received)->lines.push_back(textOf(data, size, count));
  return size * count;
}

// What a callback returns is not looked at, so this one returns nothing of use.
std::size_t keepPiece(void* data, std::size_t size, std::size_t count, void* received) {
  static_cast<Received*>(received)->pieces.push_back(textOf(data, size, count));
  return 0;
}

std::size_t keepFile(void* data, std::size_t size, std::size_t count, void* received) {
  static_cast<Received*>(received)->file += textOf(data, size, count);
  return size * count;
}

int keepProgress(void* context, double total, double now, double uploadTotal, double uploadNow) {
  auto* received = static_cast<Received*>(context);
  EXPECT_EQ(total, 0.0);
  EXPECT_EQ(uploadTotal, 0.0);
  EXPECT_EQ(uploadNow, 0.0);
  received->progress.push_back(now);
  return static_cast<int>(received->progress.size()) == received->cancelAt + 1 ? -1 : 0;
}

}  // namespace

std::string Received::body() const {
  return std::accumulate(pieces.begin(), pieces.end(), std::string());
}

int GoneDialer::dial(const std::string&, const std::string&, kvsc::Waiter&) {
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    return -1;
  }
  const support::UniqueFd gone(ends[1]);
  return ends[0];
}

std::string CollectingUtility::collected() const {
  int length = 0;
  unsigned char* const bytes = getBuffer(&length);
  const std::string text(reinterpret_cast<char*>(bytes), static_cast<std::size_t>(length));
  release(bytes);
  return text;
}

Exchange::Exchange() {
  client_.setHeaderCallback(keepLine);
  client_.setBodyCallback(keepPiece);
  client_.setFileWriteCallback(keepFile);
  client_.setProgressCallback(keepProgress);
  client_.setHeaderContext(&received_);
  client_.setBodyContext(&received_);
  client_.setProgressContext(&received_);
}

kvsc::HttpErrorIds Exchange::get(const std::string& path, long ifModifiedSince) {
  kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_FAILED;
  const int returned = client_.httpGet(server_.url(path, "127.0.0.1"), ifModifiedSince, &result,
                                       &session_, "", "", kvsc::SSLV3);
  EXPECT_EQ(returned, result);
  return result;
}

kvsc::HttpErrorIds Exchange::head(const std::string& path) {
  kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_FAILED;
  const int returned =
      client_.httpHead(server_.url(path, "127.0.0.1"), 0, &result, &session_, "", "", kvsc::SSLV3);
  EXPECT_EQ(returned, result);
  return result;
}

kvsc::HttpErrorIds Exchange::post(const std::string& data, const std::string& path, bool usePost) {
  kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_FAILED;
  const int returned = client_.httpPost(server_.url(path, "127.0.0.1"), data, &result, &session_,
                                        "", "", kvsc::SSLV3, usePost);
  EXPECT_EQ(returned, result);
  return result;
}

std::string Exchange::getRequest(const std::string& target, const std::string& headers) {
  return "GET " + target + " HTTP/1.0\r\nHost: 127.0.0.1\r\n" + headers +
         "Connection: close\r\n\r\n";
}
