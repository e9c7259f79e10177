#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "kvpm/File.h"
#include "kvpm/StringTools.h"

namespace {

/// A queue file of about this many bytes, one item of which changes from save to save.
class Queue {
 public:
  explicit Queue(std::size_t bytes) : text_(bytes, '\0') {
    for (std::size_t i = 0; i < bytes; ++i) text_[i] = static_cast<char>('a' + i * 131 / 251 % 26);
  }

  std::string_view next() {
    const std::string number = std::to_string(1'000'000 + ++version_);
    text_.replace(text_.size() / 2, number.size(), number);
    return text_;
  }

 private:
  std::string text_;
  int version_ = 0;
};

/// A folder of its own, on the disk that holds the present folder.
class Folder {
 public:
  std::string operator/(const char* name) const { return folder_.filePath(name).toStdString(); }

 private:
  const QTemporaryDir folder_{QStringLiteral("bench-storage-")};
};

template <class Save>
void measure(benchmark::State& state, Save save) {
  Queue queue(static_cast<std::size_t>(state.range(0)));
  for (int version = 0; version < 4; ++version) save(queue.next());
  for ([[maybe_unused]] auto _ : state) save(queue.next());
}

/// The limit: the same bytes, written once to a file that stays open.
void writeBytes(benchmark::State& state) {
  const Folder folder;
  const int file = ::open((folder / "queue.xml").c_str(), O_WRONLY | O_CREAT, 0600);
  measure(state, [&](std::string_view text) {
    if (::pwrite(file, text.data(), text.size(), 0) < 0) std::abort();
  });
  ::close(file);
}

void createAndRename(benchmark::State& state) {
  const Folder folder;
  measure(state, [&](std::string_view text) {
    const int file = ::open((folder / "new").c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
    if (::write(file, text.data(), text.size()) < 0) std::abort();
    ::close(file);
    std::rename((folder / "new").c_str(), (folder / "queue.xml").c_str());
  });
}

void saveOurs(benchmark::State& state) {
  const Folder folder;
  const std::wstring path = kvpm::StringTools::stringToWString(folder / "queue.xml");
  measure(state, [&](std::string_view text) {
    kvpm::File file;
    if (file.open(path, kvpm::FileOpenWrite) != 0) std::abort();
    file.write(text.data(), text.size());
    if (file.close() != 0) std::abort();
  });
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  for (const int bytes : {3'000, 300'000, 3'000'000, 30'000'000}) benchmark->Arg(bytes);
  benchmark->Unit(benchmark::kMillisecond)->UseRealTime();
}

BENCHMARK(writeBytes)->Apply(sizes);
BENCHMARK(createAndRename)->Apply(sizes);
BENCHMARK(saveOurs)->Apply(sizes);

}  // namespace

BENCHMARK_MAIN();
