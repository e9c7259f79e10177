#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace playerx::model {

/// One line of JSON, without a line feed. Bytes that are not UTF-8 become U+FFFD: titles and words
/// of servers may hold any.
inline std::string dumped(const nlohmann::ordered_json& json) {
  return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

/// Reads members of an object, which outlives it, and notes when one has another type. Members that
/// are not there leave the values as they are.
class JsonMembers {
 public:
  using Json = nlohmann::ordered_json;

  explicit JsonMembers(const Json& object) : object_(object), isGood_(object.is_object()) {}

  bool isGood() const { return isGood_; }
  bool has(const char* name) const { return object_.is_object() && object_.contains(name); }

  void take(const char* name, std::string& text) {
    if (const Json* const value = find(name, &Json::is_string)) text = value->get<std::string>();
  }

  void take(const char* name, bool& flag) {
    if (const Json* const value = find(name, &Json::is_boolean)) flag = value->get<bool>();
  }

  template <class Number>
  requires std::is_integral_v<Number>
  void take(const char* name, Number& number) {
    const Json* const value = find(name, &Json::is_number_integer);
    if (value == nullptr) return;
    const bool fits = value->is_number_unsigned()
                          ? std::in_range<Number>(value->get<std::uint64_t>())
                          : std::in_range<Number>(value->get<std::int64_t>());
    if (fits) number = value->get<Number>();
    isGood_ = isGood_ && fits;
  }

  /// A value that is written as one of several words.
  template <class Enum>
  requires std::is_enum_v<Enum>
  void take(const char* name, Enum& value) {
    const Json* const word = find(name, &Json::is_string);
    if (word == nullptr) return;
    value = word->get<Enum>();
    // An unknown word is read as the first value.
    isGood_ = isGood_ && Json(value) == *word;
  }

  template <class Element, class Read>
  void takeEach(const char* name, std::vector<Element>& elements, Read read) {
    const Json* const array = find(name, &Json::is_array);
    if (array == nullptr) return;
    for (const Json& each : *array) {
      const std::optional<Element> element = read(each);
      if (element) elements.push_back(*element);
      isGood_ = isGood_ && element.has_value();
    }
  }

  const Json& at(const char* name) const { return object_.at(name); }
  void fail() { isGood_ = false; }

 private:
  const Json* find(const char* name, bool (Json::*isRight)() const noexcept) {
    if (!has(name)) return nullptr;
    const Json& value = object_.at(name);
    if ((value.*isRight)()) return &value;
    isGood_ = false;
    return nullptr;
  }

  const Json& object_;
  bool isGood_;
};

}  // namespace playerx::model
