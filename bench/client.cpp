#include <benchmark/benchmark.h>
#include <curl/curl.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "kvsc/SSLClient.h"
#include "kvsc/SSLSession.h"
#include "tests/support/Nginx.h"
#include "tests/support/TestPki.h"

/// Our client beside libcurl's easy interface with a connection of its own for each request,
/// against one nginx.
namespace {

constexpr std::size_t kBodyBytes = 64 * 1024 * 1024;

struct Servers {
  support::Nginx plain;
  support::Nginx tls{
      {.tls = support::pki::issue(support::pki::authority("Bench"), {.commonName = "localhost"})}};

  Servers() {
    for (support::Nginx* server : {&plain, &tls}) {
      server->serve("small.avi", "x");
      server->serve("big.avi", std::string(kBodyBytes, 'b'));
    }
  }
};

Servers& servers() {
  static Servers instance;
  return instance;
}

std::string urlOf(bool tls, const char* path) {
  return tls ? servers().tls.url(path, "127.0.0.1") : servers().plain.url(path, "127.0.0.1");
}

std::size_t countBytes(void* data, std::size_t size, std::size_t count, void*) {
  benchmark::DoNotOptimize(data);
  return size * count;
}

void check(bool good, const char* what) {
  if (!good) throw std::runtime_error(what);
}

void headOurs(benchmark::State& state, bool tls) {
  const std::string url = urlOf(tls, "/small.avi");
  for ([[maybe_unused]] auto _ : state) {
    kvsc::SSLClient client("");
    kvsc::SSLSession session;
    kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_FAILED;
    client.httpHead(url, 0, &result, &session, "text/xml", "", kvsc::SSLV3);
    check(result == kvsc::HTTP_ERROR_NONE, "HEAD failed");
  }
}

using CurlHandle = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;

CurlHandle easyHandle(const std::string& url) {
  CurlHandle curl(curl_easy_init(), curl_easy_cleanup);
  curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, countBytes);
  curl_easy_setopt(curl.get(), CURLOPT_SSL_VERIFYPEER, 0L);
  curl_easy_setopt(curl.get(), CURLOPT_SSL_VERIFYHOST, 0L);
  curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
  return curl;
}

void headCurl(benchmark::State& state, bool tls) {
  const std::string url = urlOf(tls, "/small.avi");
  for ([[maybe_unused]] auto _ : state) {
    const CurlHandle curl = easyHandle(url);
    curl_easy_setopt(curl.get(), CURLOPT_NOBODY, 1L);
    check(curl_easy_perform(curl.get()) == CURLE_OK, "HEAD failed");
  }
}

void bodyOurs(benchmark::State& state, bool tls, unsigned downloadSize) {
  const std::string url = urlOf(tls, "/big.avi");
  for ([[maybe_unused]] auto _ : state) {
    kvsc::SSLClient client("");
    kvsc::SSLSession session;
    session.setDownloadSize(downloadSize);
    client.setBodyCallback(countBytes);
    kvsc::HttpErrorIds result = kvsc::HTTP_ERROR_FAILED;
    client.httpGet(url, 0, &result, &session, "", "", kvsc::SSLV3);
    check(result == kvsc::HTTP_ERROR_NONE, "GET failed");
    check(client.getTotalDownloaded() == static_cast<long>(kBodyBytes), "bytes are missing");
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kBodyBytes));
}

void bodyCurl(benchmark::State& state, bool tls) {
  const std::string url = urlOf(tls, "/big.avi");
  for ([[maybe_unused]] auto _ : state) {
    const CurlHandle curl = easyHandle(url);
    check(curl_easy_perform(curl.get()) == CURLE_OK, "GET failed");
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kBodyBytes));
}

BENCHMARK_CAPTURE(headOurs, plain, false)->UseRealTime();
BENCHMARK_CAPTURE(headCurl, plain, false)->UseRealTime();
BENCHMARK_CAPTURE(headOurs, tls, true)->UseRealTime();
BENCHMARK_CAPTURE(headCurl, tls, true)->UseRealTime();
BENCHMARK_CAPTURE(bodyOurs, plain_4096, false, 4096u)->UseRealTime();
BENCHMARK_CAPTURE(bodyOurs, plain_65536, false, 65536u)->UseRealTime();
BENCHMARK_CAPTURE(bodyCurl, plain, false)->UseRealTime();
BENCHMARK_CAPTURE(bodyOurs, tls_4096, true, 4096u)->UseRealTime();
BENCHMARK_CAPTURE(bodyOurs, tls_65536, true, 65536u)->UseRealTime();
BENCHMARK_CAPTURE(bodyCurl, tls, true)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
