// Saving and loading queues of 10 to 100,000 items, beside the write and the parse of the same
// bytes that each cannot do without.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <libxml/parser.h>
#include <malloc.h>
#include <unistd.h>

#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "item/DownloadItem.h"
#include "persistence/DownloadManagerPersistence.h"
#include "persistence/QueueText.h"
#include "tests/support/TempDir.h"

namespace {

using Items = DownloadManagerPersistence::Items;

/// A queue of completed films, as a long one usually is, and its file.
class Queue {
 public:
  explicit Queue(std::int64_t size) {
    for (std::int64_t i = 0; i < size; ++i) {
      owned_.push_back(film(std::to_wstring(1'000'000 + i)));
      items_.push_back(owned_.back().get());
    }
  }

  const Items& items() const { return items_; }
  std::wstring path() const { return (folder_ / "downloadmanager.xml").wstring(); }
  std::string content() const { return support::readFile(folder_ / "downloadmanager.xml"); }
  std::string otherPath() const { return (folder_ / "other").string(); }

 private:
  static std::unique_ptr<DownloadItem> film(const std::wstring& number) {
    auto item = std::make_unique<DownloadItem>();
    const std::wstring name = L"film-" + number + L".avi";
    item->setTitle(name);
    item->setUrl(L"http://media.example/films/" + name);
    item->setPath(L"/home/somebody/films/" + name);
    item->setContentProviderDisplayName(L"media.example");
    item->setSize(10'240);
    item->setPercentDownloaded(100);
    item->setStatus(DownloadStatusCompleted);
    return item;
  }

  support::TempDir folder_;
  std::vector<std::unique_ptr<DownloadItem>> owned_;
  Items items_;
};

void deleteItems(const Items& items) {
  for (const auto* item : items) delete item;
}

/// What changes between two saves.
enum Change : std::int64_t {
  kFirstItem,  ///< a number of the first item, of as many digits as before
  kOneDigit,   ///< a number of the first item, of a digit more or less
  kBothEnds,   ///< such a number of the first and of the last item
};

void change(const Queue& queue, std::int64_t kind, unsigned long step) {
  const unsigned long seconds = kind == kFirstItem ? 10 + step % 90 : 9 + step % 2;
  queue.items().front()->setTimeRemaining(seconds);
  if (kind == kBothEnds) queue.items().back()->setTimeRemaining(seconds);
}

/// What the module itself does for a save.
void textOf(benchmark::State& state) {
  const Queue queue(state.range(0));
  persistence::QueueText text;
  text.update(queue.items());
  unsigned long step = 0;
  for ([[maybe_unused]] auto _ : state) {
    change(queue, state.range(1), ++step);
    benchmark::DoNotOptimize(text.update(queue.items()));
  }
}

void save(benchmark::State& state) {
  const Queue queue(state.range(0));
  unsigned long step = 0;
  for ([[maybe_unused]] auto _ : state) {
    change(queue, kFirstItem, ++step);
    DownloadManagerPersistence::writeDownloadQueue(queue.path(), queue.items());
  }
}

void plainWrite(benchmark::State& state) {
  const Queue queue(state.range(0));
  DownloadManagerPersistence::writeDownloadQueue(queue.path(), queue.items());
  const std::string content = queue.content();
  const int file = ::open(queue.otherPath().c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(::pwrite(file, content.data(), content.size(), 0));
  }
  ::close(file);
}

/// The resident memory of this process.
double residentBytes() {
  std::ifstream statm("/proc/self/statm");
  double pages = 0;
  statm >> pages >> pages;
  return pages * static_cast<double>(::sysconf(_SC_PAGESIZE));
}

void firstSave(benchmark::State& state) {
  const Queue queue(state.range(0));
  for ([[maybe_unused]] auto _ : state) {
    persistence::QueueText text;
    benchmark::DoNotOptimize(text.update(queue.items()));
  }
}

void load(benchmark::State& state) {
  const Queue queue(state.range(0));
  DownloadManagerPersistence::writeDownloadQueue(queue.path(), queue.items());
  for ([[maybe_unused]] auto _ : state) {
    const Items items = DownloadManagerPersistence::readDownloadQueue(queue.path());
    state.PauseTiming();
    deleteItems(items);
    state.ResumeTiming();
  }
}

void parse(benchmark::State& state) {
  const Queue queue(state.range(0));
  DownloadManagerPersistence::writeDownloadQueue(queue.path(), queue.items());
  const std::string file = queue.content();
  for ([[maybe_unused]] auto _ : state) {
    xmlDoc* const document =
        xmlReadMemory(file.data(), static_cast<int>(file.size()), "noname.xml", nullptr, 0);
    state.PauseTiming();
    xmlFreeDoc(document);
    state.ResumeTiming();
  }
}

/// Memory that a loaded queue and its first save take for good, as a multiple of its file.
void memory(benchmark::State& state) {
  support::TempDir folder;
  const std::wstring path = (folder / "downloadmanager.xml").wstring();
  std::size_t fileSize = 0;
  {
    const Queue queue(state.range(0));
    DownloadManagerPersistence::writeDownloadQueue(queue.path(), queue.items());
    support::writeFile(folder / "downloadmanager.xml", queue.content());
    fileSize = queue.content().size();
    DownloadManagerPersistence::writeDownloadQueue(queue.path(), {});
  }
  for ([[maybe_unused]] auto _ : state) {
    ::malloc_trim(0);
    const double before = residentBytes();
    const Items items = DownloadManagerPersistence::readDownloadQueue(path);
    items.front()->setPercentDownloaded(1);
    DownloadManagerPersistence::writeDownloadQueue(path, items);
    const double multiple = (residentBytes() - before) / static_cast<double>(fileSize);
    state.counters["of_the_file"] = multiple;
    deleteItems(items);
  }
}

constexpr std::int64_t kLengths[] = {10, 1'000, 10'000, 100'000};

void lengths(benchmark::internal::Benchmark* benchmark) {
  for (const std::int64_t length : kLengths) benchmark->Arg(length);
}

void lengthsOfEachChange(benchmark::internal::Benchmark* benchmark) {
  for (const std::int64_t length : kLengths) {
    for (const std::int64_t kind : {kFirstItem, kOneDigit, kBothEnds}) {
      benchmark->Args({length, kind});
    }
  }
}

BENCHMARK(textOf)->Apply(lengthsOfEachChange)->Unit(benchmark::kMicrosecond);
BENCHMARK(save)->Apply(lengths)->Unit(benchmark::kMicrosecond);
BENCHMARK(plainWrite)->Apply(lengths)->Unit(benchmark::kMicrosecond);
BENCHMARK(firstSave)->Apply(lengths)->Unit(benchmark::kMicrosecond);
BENCHMARK(load)->Apply(lengths)->Unit(benchmark::kMicrosecond);
BENCHMARK(parse)->Apply(lengths)->Unit(benchmark::kMicrosecond);
BENCHMARK(memory)->Arg(100'000)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
