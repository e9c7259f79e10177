#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <QByteArray>
#include <memory>
#include <string>

#include "persistence/RFCBase64Codec.h"
#include "persistence/URLEscape.h"

namespace {

constexpr std::size_t kBytes = 3 * 64 * 1024;

std::string someBytes() {
  std::string bytes(kBytes, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 131 + i / 251);
  return bytes;
}

/// An address of the usual kind: one byte in sixteen is to be escaped.
std::string someAddress() {
  std::string text;
  while (text.size() < kBytes) text += "films/name-2026 x";
  return text;
}

void setRate(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}

void encodeOurs(benchmark::State& state) {
  std::string bytes = someBytes();
  kv64::RFCBase64Codec codec;
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(codec.encode(bytes.data(), static_cast<int>(bytes.size())));
  }
  setRate(state, bytes.size());
}
BENCHMARK(encodeOurs);

void encodeQt(benchmark::State& state) {
  const QByteArray bytes = QByteArray::fromStdString(someBytes());
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(bytes.toBase64(QByteArray::Base64UrlEncoding));
  }
  setRate(state, static_cast<std::size_t>(bytes.size()));
}
BENCHMARK(encodeQt);

void encodeOpenSsl(benchmark::State& state) {
  const std::string bytes = someBytes();
  std::string text(kBytes / 3 * 4 + 1, '\0');
  for ([[maybe_unused]] auto _ : state) {
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                    reinterpret_cast<const unsigned char*>(bytes.data()),
                    static_cast<int>(bytes.size()));
    benchmark::ClobberMemory();
  }
  setRate(state, bytes.size());
}
BENCHMARK(encodeOpenSsl);

void decodeOurs(benchmark::State& state) {
  kv64::RFCBase64Codec codec;
  const std::string text = codec.encode(someBytes());
  for ([[maybe_unused]] auto _ : state) {
    int length = 0;
    std::unique_ptr<char[]> bytes(codec.decode(text, &length));
    benchmark::DoNotOptimize(bytes.get());
  }
  setRate(state, text.size());
}
BENCHMARK(decodeOurs);

void decodeQt(benchmark::State& state) {
  const QByteArray text =
      QByteArray::fromStdString(someBytes()).toBase64(QByteArray::Base64UrlEncoding);
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(QByteArray::fromBase64(text, QByteArray::Base64UrlEncoding));
  }
  setRate(state, static_cast<std::size_t>(text.size()));
}
BENCHMARK(decodeQt);

void escapeOurs(benchmark::State& state) {
  const std::string text = someAddress();
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(URLEscape::escape(text));
  setRate(state, text.size());
}
BENCHMARK(escapeOurs);

void escapeQt(benchmark::State& state) {
  const QByteArray text = QByteArray::fromStdString(someAddress());
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(text.toPercentEncoding("/"));
  setRate(state, static_cast<std::size_t>(text.size()));
}
BENCHMARK(escapeQt);

void unescapeOurs(benchmark::State& state) {
  const std::string text = URLEscape::escape(someAddress());
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(URLEscape::unescape(text));
  setRate(state, text.size());
}
BENCHMARK(unescapeOurs);

void unescapeQt(benchmark::State& state) {
  const QByteArray text = QByteArray::fromStdString(URLEscape::escape(someAddress()));
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(QByteArray::fromPercentEncoding(text));
  }
  setRate(state, static_cast<std::size_t>(text.size()));
}
BENCHMARK(unescapeQt);

}  // namespace

BENCHMARK_MAIN();
