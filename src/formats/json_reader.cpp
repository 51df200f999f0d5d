#include "formats/json_reader.h"

#include <new>

#include "text/json_text.h"
#include "text/text_fields.h"
#include "text/utf8.h"

namespace fabscope::internal {
namespace {

constexpr const char* badEscape = "malformed JSON: bad escape in a string";

std::string JoinedKeys(std::span<const std::string_view> keys) {
  std::string joined;
  for (const std::string_view key : keys) {
    if (!joined.empty()) joined += ", ";
    joined += key;
  }
  return joined;
}

// Where a string of the text meets a control character (a line end, mostly) or the text's end.
std::size_t BadStringEnd(std::string_view text) {
  bool inString = false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (inString && static_cast<unsigned char>(text[at]) < 0x20) return at;
    if (inString && text[at] == '\\') {
      ++at;
    } else if (text[at] == '"') {
      inString = !inString;
    }
  }
  return text.size();
}

}  // namespace

bool JsonReader::Open() {
  const std::size_t start = input_.Start();
  const simdjson::padded_string_view text(input_.bytes.data() + start, input_.bytes.size() - start,
                                          input_.bytes.capacity() - start);
  if (const auto code = parser_.iterate(text).get(document_)) return FailJson(code);
  isOpen_ = true;
  return true;
}

// Behind the last token there is no location left.
bool JsonReader::ReadEnd() {
  const char* rest = nullptr;
  if (document_.current_location().get(rest) != simdjson::SUCCESS) return true;
  return Fail(OffsetOf(rest), "malformed JSON: something stands behind the document");
}

bool JsonReader::FailEscape(std::size_t offset) { return Fail(offset, badEscape); }

bool JsonReader::FailKey(std::size_t offset, std::string_view key, std::string_view what,
                         Keys keys) {
  return Fail(offset, "unknown key \"" + CleanText(key) + "\" in " + std::string(what) +
                          ", expected one of " + JoinedKeys(keys));
}

bool JsonReader::FailJson(simdjson::error_code code) {
  const std::string_view text = input_.bytes;
  switch (code) {
    case simdjson::MEMALLOC:
      throw std::bad_alloc();
    case simdjson::UTF8_ERROR:
      return Fail(FirstInvalidUtf8(text), "malformed JSON: not valid UTF-8");
    case simdjson::UNESCAPED_CHARS:
    case simdjson::UNCLOSED_STRING:
      return Fail(BadStringEnd(text), "malformed JSON: a string that does not end on its line");
    case simdjson::INCOMPLETE_ARRAY_OR_OBJECT:
      return Fail(text.size(), "malformed JSON: the text does not end with the closing brace");
    default:
      break;
  }
  // A text that was refused as a whole has no location.
  std::size_t offset = text.size();
  const char* place = nullptr;
  if (isOpen_ && document_.current_location().get(place) == simdjson::SUCCESS) {
    offset = OffsetOf(place);
  }
  return Fail(offset, std::string("malformed JSON: ") + simdjson::error_message(code));
}

bool JsonReader::ReadString(Value value, std::string_view& text) {
  const std::size_t offset = OffsetOf(value);
  const auto code = value.get_string().get(text);
  if (code == simdjson::INCORRECT_TYPE) return Fail(offset, "expected a string");
  if (code != simdjson::SUCCESS) return FailEscape(offset);
  return true;
}

bool JsonReader::ReadText(Value value, std::string& text) {
  std::string_view raw;
  if (!ReadString(value, raw)) return false;
  text = CleanText(raw);
  return true;
}

bool JsonReader::ReadBool(Value value, bool& flag) {
  const std::size_t offset = OffsetOf(value);
  if (value.get_bool().get(flag) != simdjson::SUCCESS) {
    return Fail(offset, "expected true or false");
  }
  return true;
}

bool JsonReader::ReadSigned(Value value, std::int32_t& number) {
  constexpr std::int64_t least = std::numeric_limits<std::int32_t>::min();
  constexpr std::int64_t greatest = std::numeric_limits<std::int32_t>::max();
  const std::size_t offset = OffsetOf(value);
  std::int64_t wide = 0;
  if (value.get_int64().get(wide) != simdjson::SUCCESS || wide < least || wide > greatest) {
    return Fail(offset, "expected a whole number from " + std::to_string(least) + " to " +
                            std::to_string(greatest));
  }
  number = static_cast<std::int32_t>(wide);
  return true;
}

bool JsonReader::ReadGuid(Value value, std::uint64_t& guid) {
  const std::size_t offset = OffsetOf(value);
  std::string_view text;
  if (!ReadString(value, text)) return false;
  const auto parsed = ParseGuid(text);
  if (!parsed) return Fail(offset, "not a GUID, expected \"0x\" and 1 to 16 hexadecimal digits");
  guid = *parsed;
  return true;
}

bool JsonReader::ReadAny(Value value, int levels) {
  const std::size_t offset = OffsetOf(value);
  simdjson::ondemand::json_type type{};
  if (const auto code = value.type().get(type)) return FailJson(code);
  switch (type) {
    case simdjson::ondemand::json_type::array:
    case simdjson::ondemand::json_type::object:
      if (levels == 0) return Fail(offset, "nested too deeply");
      return ReadAnyInside(value, type, levels - 1);
    case simdjson::ondemand::json_type::string: {
      std::string_view text;
      return ReadString(value, text);
    }
    case simdjson::ondemand::json_type::boolean: {
      bool flag = false;
      return ReadBool(value, flag);
    }
    case simdjson::ondemand::json_type::number: {
      double number = 0;
      return value.get_double().get(number) == simdjson::SUCCESS ||
             Fail(offset, "expected a number");
    }
    case simdjson::ondemand::json_type::null: {
      bool isNull = false;
      return (value.is_null().get(isNull) == simdjson::SUCCESS && isNull) ||
             Fail(offset, "expected null");
    }
  }
  return true;
}

bool JsonReader::ReadAnyInside(Value value, simdjson::ondemand::json_type type, int levels) {
  if (type == simdjson::ondemand::json_type::array) {
    return ReadArray(value, [&](Value item) { return ReadAny(item, levels); });
  }
  simdjson::ondemand::object object;
  if (const auto code = value.get_object().get(object)) return FailJson(code);
  for (auto member : object) {
    if (const auto code = member.error()) return FailJson(code);
    if (!ReadAny(member.value_unsafe().value(), levels)) return false;
  }
  return true;
}

bool JsonReader::ReadVersion(Value value) {
  const std::size_t offset = OffsetOf(value);
  std::uint64_t version = 0;
  if (value.get_uint64().get(version) != simdjson::SUCCESS || version != 1) {
    return Fail(offset, "unknown version of the format, expected 1");
  }
  return true;
}

}  // namespace fabscope::internal
