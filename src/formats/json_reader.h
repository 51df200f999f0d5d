#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <simdjson.h>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "formats/diagnostics.h"
#include "formats/input_text.h"

namespace fabscope::internal {

// What loaders of JSON documents have in common. simdjson's On-Demand parser hands out the values
// one by one, straight from the text, so that every complaint can name the line and column of the
// value it is about.
//
// Every Read operation answers false when it failed, with the reason in the error.
class JsonReader {
 public:
  JsonReader(const JsonReader&) = delete;
  JsonReader& operator=(const JsonReader&) = delete;

 protected:
  using Value = simdjson::ondemand::value;
  using Keys = std::span<const std::string_view>;

  explicit JsonReader(const InputText& input) : input_(input) {}
  ~JsonReader() = default;

  MaybeError& Error() { return error_; }
  bool Fail(std::size_t offset, std::string message) {
    if (!error_) error_ = input_.ErrorAt(offset, std::move(message));
    return false;
  }
  bool FailJson(simdjson::error_code code);
  std::size_t LineOf(std::size_t offset) const { return input_.ErrorAt(offset, {}).line; }
  std::size_t OffsetOf(const char* place) const {
    return static_cast<std::size_t>(place - input_.bytes.data());
  }
  std::size_t OffsetOf(Value& value) const { return OffsetOf(value.raw_json_token().data()); }

  // The whole text: one object, with nothing behind it. Its members are read as by ReadMembers.
  template <typename Read>
  bool ReadDocument(Keys keys, std::size_t required, Read read);
  // Calls read(key, value) for every member. Each key is one of `keys` and stands there once;
  // `required` of the first ones must be there. `what` names the object in messages.
  template <typename Read>
  bool ReadObject(Value value, std::string_view what, Keys keys, std::size_t required, Read read);
  template <typename Read>
  bool ReadArray(Value value, Read read);

  bool ReadString(Value value, std::string_view& text);
  // A text for people, without control characters.
  bool ReadText(Value value, std::string& text);
  bool ReadBool(Value value, bool& flag);
  template <typename T>
  bool ReadUnsigned(Value value, T& number, T least = 0);
  bool ReadPortNumber(Value value, std::uint8_t& number) {
    return ReadUnsigned<std::uint8_t>(value, number, 1);
  }
  bool ReadSigned(Value value, std::int32_t& number);
  bool ReadGuid(Value value, std::uint64_t& guid);
  bool ReadVersion(Value value);
  // Whatever it is, as long as it is well formed.
  bool ReadAny(Value value) { return ReadAny(value, mostLevels); }

 private:
  // Of what nobody has a name for. Each takes a part of the stack.
  static constexpr int mostLevels = 64;

  bool ReadAny(Value value, int levels);
  bool ReadAnyInside(Value value, simdjson::ondemand::json_type type, int levels);
  bool Open();
  bool ReadEnd();
  bool FailEscape(std::size_t offset);
  bool FailKey(std::size_t offset, std::string_view key, std::string_view what, Keys keys);
  template <typename Read>
  bool ReadMembers(simdjson::ondemand::object object, std::size_t offset, std::string_view what,
                   Keys keys, std::size_t required, Read read);

  const InputText& input_;
  MaybeError error_;
  simdjson::ondemand::parser parser_;
  simdjson::ondemand::document document_;
  bool isOpen_ = false;
};

template <typename Read>
bool JsonReader::ReadDocument(Keys keys, std::size_t required, Read read) {
  if (!Open()) return false;
  simdjson::ondemand::object object;
  const std::size_t offset = input_.bytes.find_first_not_of(" \t\r\n", input_.Start());
  if (const auto code = document_.get_object().get(object)) {
    if (code != simdjson::INCORRECT_TYPE) return FailJson(code);
    return Fail(offset, "expected an object: the document");
  }
  return ReadMembers(object, offset, "the document", keys, required, read) && ReadEnd();
}

template <typename Read>
bool JsonReader::ReadMembers(simdjson::ondemand::object object, std::size_t offset,
                             std::string_view what, Keys keys, std::size_t required, Read read) {
  std::uint32_t seen = 0;
  for (auto member : object) {
    if (const auto code = member.error()) return FailJson(code);
    simdjson::ondemand::field field = member.value_unsafe();
    const std::size_t keyOffset = OffsetOf(field.key().raw()) - 1;
    std::string_view key;
    if (field.unescaped_key().get(key) != simdjson::SUCCESS) return FailEscape(keyOffset);
    const auto known = std::find(keys.begin(), keys.end(), key);
    if (known == keys.end()) return FailKey(keyOffset, key, what, keys);
    const std::uint32_t bit = 1U << static_cast<unsigned>(known - keys.begin());
    if ((seen & bit) != 0) {
      return Fail(keyOffset, "key \"" + std::string(key) + "\" is given twice");
    }
    seen |= bit;
    if (!read(*known, field.value())) return false;
  }
  for (std::size_t i = 0; i < required; ++i) {
    if ((seen & 1U << i) == 0) {
      return Fail(offset, std::string(what) + " has no \"" + std::string(keys[i]) + "\"");
    }
  }
  return true;
}

template <typename Read>
bool JsonReader::ReadObject(Value value, std::string_view what, Keys keys, std::size_t required,
                            Read read) {
  const std::size_t offset = OffsetOf(value);
  simdjson::ondemand::object object;
  if (const auto code = value.get_object().get(object)) {
    if (code != simdjson::INCORRECT_TYPE) return FailJson(code);
    return Fail(offset, "expected an object: " + std::string(what));
  }
  return ReadMembers(object, offset, what, keys, required, read);
}

template <typename Read>
bool JsonReader::ReadArray(Value value, Read read) {
  const std::size_t offset = OffsetOf(value);
  simdjson::ondemand::array array;
  if (const auto code = value.get_array().get(array)) {
    if (code != simdjson::INCORRECT_TYPE) return FailJson(code);
    return Fail(offset, "expected an array");
  }
  for (auto element : array) {
    if (const auto code = element.error()) return FailJson(code);
    if (!read(element.value_unsafe())) return false;
  }
  return true;
}

template <typename T>
bool JsonReader::ReadUnsigned(Value value, T& number, T least) {
  constexpr T greatest = std::numeric_limits<T>::max();
  const std::size_t offset = OffsetOf(value);
  std::uint64_t wide = 0;
  if (value.get_uint64().get(wide) != simdjson::SUCCESS || wide < least || wide > greatest) {
    return Fail(offset, "expected a whole number from " + std::to_string(least) + " to " +
                            std::to_string(greatest));
  }
  number = static_cast<T>(wide);
  return true;
}

}  // namespace fabscope::internal
