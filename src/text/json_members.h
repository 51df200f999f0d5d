#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

#include "fabric/guid.h"
#include "text/json_text.h"

namespace fabscope::internal {

// One JSON object or array while it is written: opens with its making, closes with its end, and
// puts the commas between its members. Nested ones must end before their owner goes on:
//
//   JsonMembers object(json, '{', '}');
//   object.Number("id", 7);
//   {
//     JsonMembers list(object.Key("nodes"), '[', ']');
//     list.Guid(0x2c9);
//   }
class JsonMembers {
 public:
  JsonMembers(std::string& json, char open, char close) : json_(json), close_(close) {
    json_ += open;
  }
  JsonMembers(const JsonMembers&) = delete;
  JsonMembers& operator=(const JsonMembers&) = delete;
  // May find no memory; must not try while the same is being told of a member.
  ~JsonMembers() noexcept(false) {
    if (std::uncaught_exceptions() == 0) json_ += close_;
  }

  // The text to append a member's value to.
  std::string& Next() {
    if (!first_) json_ += ',';
    first_ = false;
    return json_;
  }
  std::string& Key(std::string_view key) {
    Next() += '"';
    return json_.append(key).append("\":");
  }

  template <typename T>
  void Number(std::string_view key, T number) {
    Key(key) += std::to_string(number);
  }
  void Flag(std::string_view key, bool flag) { Key(key) += flag ? "true" : "false"; }
  void Text(std::string_view key, std::string_view text) { AppendJsonString(Key(key), text); }
  void Guid(std::string_view key, std::uint64_t guid) { AppendGuid(Key(key), guid); }
  void Guid(std::uint64_t guid) { AppendGuid(Next(), guid); }
  template <typename Numbers>
  void NumberArray(std::string_view key, const Numbers& numbers) {
    JsonMembers array(Key(key), '[', ']');
    for (const auto number : numbers) array.Next() += std::to_string(number);
  }

 private:
  static void AppendGuid(std::string& json, std::uint64_t guid) {
    json += '"';
    AppendGuidText(json, guid);
    json += '"';
  }

  std::string& json_;
  char close_;
  bool first_ = true;
};

}  // namespace fabscope::internal
