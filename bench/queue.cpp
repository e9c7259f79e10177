// Saving and loading queues of 10 to 100,000 items, beside the write and the parse of the same
// bytes that each cannot do without; finding items, beside a look through them.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <libxml/parser.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "bench/CompletedFilms.h"
#include "item/DownloadItem.h"
#include "persistence/DownloadManagerPersistence.h"
#include "persistence/QueueText.h"
#include "plugin/DownloadQueue.h"
#include "tests/support/TempDir.h"

namespace {

using Items = DownloadManagerPersistence::Items;

/// A queue of completed films and its file.
class Queue {
 public:
  explicit Queue(std::int64_t size) : films_(size) {}

  const Items& items() const { return films_.items(); }
  std::wstring path() const { return (folder_ / "downloadmanager.xml").wstring(); }
  std::string content() const { return support::readFile(folder_ / "downloadmanager.xml"); }
  std::string otherPath() const { return (folder_ / "other").string(); }

 private:
  support::TempDir folder_;
  bench::CompletedFilms films_;
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

/// The items of a queue that finds them, of which the last is looked for.
class FoundQueue {
 public:
  explicit FoundQueue(std::int64_t size) {
    const bench::CompletedFilms films(size);
    // Adding one at a time looks for its place among the completed ones each time.
    for (const auto* const film : films.items()) items_.push_back(new DownloadItem(film));
    queue_.assign(items_);
  }

  const plugin::DownloadQueue& queue() const { return queue_; }
  const Items& items() const { return items_; }
  const plugin::DownloadQueue::Item& last() const { return *items_.back(); }

 private:
  plugin::DownloadQueue queue_;
  Items items_;
};

void findId(benchmark::State& state) {
  const FoundQueue found(state.range(0));
  const unsigned int id = found.last().getId();
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(found.queue().find(id));
}

void findAddress(benchmark::State& state) {
  const FoundQueue found(state.range(0));
  const std::wstring url = found.last().getUrl();
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(found.queue().findUrl(url));
}

void findTicket(benchmark::State& state) {
  const FoundQueue found(state.range(0));
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(found.queue().findTicket("none"));
}

void findPath(benchmark::State& state) {
  const FoundQueue found(state.range(0));
  const std::wstring path = found.last().getPath();
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(found.queue().findPath(path));
}

/// What a look through the queue takes.
void findIdByLooking(benchmark::State& state) {
  const FoundQueue found(state.range(0));
  const unsigned int id = found.last().getId();
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(std::find_if(found.items().begin(), found.items().end(),
                                          [id](const auto* item) { return item->getId() == id; }));
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
BENCHMARK(findId)->Apply(lengths);
BENCHMARK(findAddress)->Apply(lengths);
BENCHMARK(findTicket)->Apply(lengths);
BENCHMARK(findPath)->Apply(lengths);
BENCHMARK(findIdByLooking)->Apply(lengths);
BENCHMARK(memory)->Arg(100'000)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
