#include <nlohmann/json.hpp>
#include <ostream>

#include "playerx/app/model/JsonMembers.h"
#include "playerx/cli/Reporter.h"

namespace playerx::cli {

namespace {

using Json = nlohmann::ordered_json;
using model::ItemState;
using model::Progress;
using model::QueueProgress;
using reasons::Explanation;

Json describe(const char* event, const ItemState& item) {
  return Json{{"version", kJsonVersion},
              {"event", event},
              {"id", item.id},
              {"url", item.url},
              {"title", item.title},
              {"provider", item.provider},
              {"status", model::statusWord(item.status)},
              {"percent", item.percent},
              {"size", item.size},
              {"path", item.path}};
}

Json describe(const Explanation& reason) {
  return Json{{"code", reason.code()}, {"sentence", reason.sentence()}};
}

template <class T>
Json orNull(const std::optional<T>& value) {
  return value ? Json(*value) : Json(nullptr);
}

void add(const Progress& progress, Json& object) {
  object["arrived"] = orNull(progress.arrived);
  object["bytesPerSecond"] = progress.bytesPerSecond;
  object["secondsRemaining"] = orNull(progress.secondsLeft);
  object["silentSeconds"] = progress.silentSeconds;
}

class JsonReporter : public Reporter {
 public:
  JsonReporter(std::ostream& out, std::ostream& notes) : out_(out), notes_(notes) {}

  void added(const ItemState& item) override { print(describe("added", item)); }

  void changed(const ItemState& item, const Progress& progress) override {
    Json object = describe("changed", item);
    add(progress, object);
    print(object);
  }

  void finished(const ItemState& item, const std::string& oddity) override {
    Json object = describe("finished", item);
    if (!oddity.empty()) object["oddity"] = oddity;
    print(object);
  }

  void wasThere(const ItemState& item) override { finished(item, {}); }

  void failed(const ItemState& item, const Explanation& reason) override {
    Json object = describe("failed", item);
    object["reason"] = describe(reason);
    print(object);
  }

  void refused(const std::string& argument, const Explanation& reason) override {
    print(Json{{"version", kJsonVersion},
               {"event", "refused"},
               {"argument", argument},
               {"reason", describe(reason)}});
  }

  void listed(const Listing& listing) override {
    Json object = describe("listed", listing.item);
    object["position"] = listing.position;
    add(listing.progress, object);
    if (listing.reason) object["reason"] = describe(*listing.reason);
    if (!listing.oddity.empty()) object["oddity"] = listing.oddity;
    out_ << model::dumped(object) << '\n';  // `listedAll` flushes
  }

  void listedAll(const QueueProgress& queue) override { queueProgress(queue); }

  void queueProgress(const QueueProgress& queue) override {
    print(Json{{"version", kJsonVersion},
               {"event", "queue"},
               {"items", queue.items},
               {"completed", queue.completed},
               {"arrived", queue.arrived},
               {"total", queue.total},
               {"unknownSizes", queue.unknownSizes},
               {"paused", queue.isPaused}});
  }

  // The exit status says it to programs.
  void done(const std::string& sentence) override { note(sentence); }

  void note(const std::string& sentence) override { notes_ << sentence << std::endl; }

 private:
  void print(const Json& object) { out_ << model::dumped(object) << std::endl; }

  std::ostream& out_;
  std::ostream& notes_;
};

}  // namespace

std::unique_ptr<Reporter> makeJsonReporter(std::ostream& out, std::ostream& notes) {
  return std::make_unique<JsonReporter>(out, notes);
}

}  // namespace playerx::cli
