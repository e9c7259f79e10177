#include <nlohmann/json.hpp>
#include <ostream>

#include "playerx/cli/Reporter.h"

namespace playerx::cli {

namespace {

using Json = nlohmann::ordered_json;
using model::ItemState;
using reasons::Explanation;

Json describe(const char* event, const ItemState& item) {
  return Json{{"event", event},
              {"id", item.id},
              {"url", item.url},
              {"title", item.title},
              {"provider", item.provider},
              {"status", model::statusWord(item.status)},
              {"percent", item.percent},
              {"size", item.size},
              {"path", item.path},
              {"secondsRemaining", item.secondsRemaining}};
}

Json describe(const Explanation& reason) {
  return Json{{"code", reason.code()}, {"sentence", reason.sentence()}};
}

class JsonReporter : public Reporter {
 public:
  JsonReporter(std::ostream& out, std::ostream& notes) : out_(out), notes_(notes) {}

  void added(const ItemState& item) override { print(describe("added", item)); }

  void changed(const ItemState& item, std::uint64_t bytesPerSecond) override {
    Json object = describe("changed", item);
    object["bytesPerSecond"] = bytesPerSecond;
    print(object);
  }

  void finished(const ItemState& item, const std::string& oddity) override {
    Json object = describe("finished", item);
    if (!oddity.empty()) object["oddity"] = oddity;
    print(object);
  }

  void failed(const ItemState& item, const Explanation& reason) override {
    Json object = describe("failed", item);
    object["reason"] = describe(reason);
    print(object);
  }

  void refused(const std::string& argument, const Explanation& reason) override {
    print(Json{{"event", "refused"}, {"argument", argument}, {"reason", describe(reason)}});
  }

  void listed(int position, const ItemState& item) override {
    Json object = describe("listed", item);
    object["position"] = position;
    print(object);
  }

  void note(const std::string& sentence) override { notes_ << sentence << std::endl; }

 private:
  void print(const Json& object) {
    // Bytes that are not UTF-8 become U+FFFD: every line is valid JSON whatever a title holds.
    out_ << object.dump(-1, ' ', false, Json::error_handler_t::replace) << std::endl;
  }

  std::ostream& out_;
  std::ostream& notes_;
};

}  // namespace

std::unique_ptr<Reporter> makeJsonReporter(std::ostream& out, std::ostream& notes) {
  return std::make_unique<JsonReporter>(out, notes);
}

}  // namespace playerx::cli
