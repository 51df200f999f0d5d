// Reading a fabric document.
//
// simdjson's On-Demand parser hands out the values one by one, straight from the text, so that
// every complaint can name the line and column of the value it is about. Links and aggregated ports
// may stand before the nodes that they name; they are kept until the whole document was read.

#include "formats/fabric_document.h"

#include <algorithm>
#include <array>
#include <limits>
#include <new>
#include <simdjson.h>
#include <span>
#include <utility>
#include <vector>

#include "formats/json_text.h"
#include "formats/link_speeds.h"
#include "formats/text_fields.h"

namespace fabscope {
namespace {

namespace ondemand = simdjson::ondemand;

using Keys = std::span<const std::string_view>;

constexpr std::array<std::string_view, 5> documentKeys{"format", "version", "nodes", "links",
                                                       "aports"};
constexpr std::array<std::string_view, 15> nodeKeys{
    "guid",         "type",          "name",    "numPorts",  "systemGuid",
    "displayName",  "smdbRank",      "special", "multiAsic", "asic",
    "planesNumber", "suitablePlane", "planes",  "flids",     "ports"};
constexpr std::array<std::string_view, 9> portKeys{
    "num",  "state", "speed", "symmetric", "fnm", "fnm1", "inSubFabric", "planeMultiplicity",
    "group"};
constexpr std::array<std::string_view, 6> linkKeys{"a",     "aPort", "b",
                                                   "bPort", "speed", "symmetric"};
constexpr std::array<std::string_view, 2> aportKeys{"ports", "asymmetry"};

constexpr const char* badEscape = "malformed JSON: bad escape in a string";

struct PlacedPort {
  PortSpec spec;
  std::size_t offset = 0;
};

struct PlacedLink {
  LinkSpec spec;
  std::size_t offset = 0;
};

struct PlacedAPort {
  std::vector<PortRef> ports;
  std::uint64_t asymmetry = 0;
  std::size_t offset = 0;
};

std::string JoinedKeys(Keys keys) {
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

// Every Read operation answers false when it failed, with the reason in error_.
class DocumentLoader {
 public:
  DocumentLoader(const InputText& input, const NodeNameMap* names, FabricBuilder& builder)
      : input_(input), names_(names), builder_(builder) {}

  MaybeError Load();

 private:
  bool Fail(std::size_t offset, std::string message) {
    if (!error_) error_ = input_.ErrorAt(offset, std::move(message));
    return false;
  }
  bool FailJson(simdjson::error_code code);
  bool Apply(std::size_t offset, FabricBuilder::Problem problem) {
    return !problem || Fail(offset, std::move(*problem));
  }
  std::size_t OffsetOf(const char* place) const {
    return static_cast<std::size_t>(place - input_.bytes.data());
  }
  std::size_t OffsetOf(ondemand::value& value) const {
    return OffsetOf(value.raw_json_token().data());
  }

  // Calls read(key, value) for every member. Each key is one of `keys` and stands there once;
  // `required` of the first ones must be there. `what` names the object in messages.
  template <typename Read>
  bool ReadMembers(ondemand::object object, std::size_t offset, std::string_view what, Keys keys,
                   std::size_t required, Read read);
  template <typename Read>
  bool ReadObject(ondemand::value value, std::string_view what, Keys keys, std::size_t required,
                  Read read);
  template <typename Read>
  bool ReadArray(ondemand::value value, Read read);

  bool ReadString(ondemand::value value, std::string_view& text);
  bool ReadText(ondemand::value value, std::string& text);
  bool ReadBool(ondemand::value value, bool& flag);
  template <typename T>
  bool ReadUnsigned(ondemand::value value, T& number, T least = 0);
  bool ReadPortNumber(ondemand::value value, std::uint8_t& number) {
    return ReadUnsigned<std::uint8_t>(value, number, 1);
  }
  bool ReadSigned(ondemand::value value, std::int32_t& number);
  bool ReadGuid(ondemand::value value, std::uint64_t& guid);
  bool ReadSpeed(ondemand::value value, std::uint32_t& speed);
  bool ReadType(ondemand::value value, std::uint32_t& type);

  bool ReadDocument();
  bool ReadFormat(ondemand::value value);
  bool ReadVersion(ondemand::value value);
  bool ReadNode(ondemand::value value);
  bool ReadNodeMember(std::string_view key, ondemand::value value, NodeSpec& node);
  bool ReadPort(ondemand::value value, PlacedPort& port);
  bool ReadLink(ondemand::value value);
  bool ReadAPort(ondemand::value value);
  bool ReadPortRef(ondemand::value value, PortRef& port);
  bool AddLinksAndAPorts();

  const InputText& input_;
  const NodeNameMap* names_;
  FabricBuilder& builder_;
  MaybeError error_;
  ondemand::parser parser_;
  ondemand::document document_;
  bool isOpen_ = false;
  std::vector<PlacedLink> links_;
  std::vector<PlacedAPort> aports_;
};

bool DocumentLoader::FailJson(simdjson::error_code code) {
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

template <typename Read>
bool DocumentLoader::ReadMembers(ondemand::object object, std::size_t offset, std::string_view what,
                                 Keys keys, std::size_t required, Read read) {
  std::uint32_t seen = 0;
  for (auto member : object) {
    if (const auto code = member.error()) return FailJson(code);
    ondemand::field field = member.value_unsafe();
    const std::size_t keyOffset = OffsetOf(field.key().raw()) - 1;
    std::string_view key;
    if (field.unescaped_key().get(key) != simdjson::SUCCESS) return Fail(keyOffset, badEscape);
    const auto known = std::find(keys.begin(), keys.end(), key);
    if (known == keys.end()) {
      return Fail(keyOffset, "unknown key \"" + CleanText(key) + "\" in " + std::string(what) +
                                 ", expected one of " + JoinedKeys(keys));
    }
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
bool DocumentLoader::ReadObject(ondemand::value value, std::string_view what, Keys keys,
                                std::size_t required, Read read) {
  const std::size_t offset = OffsetOf(value);
  ondemand::object object;
  if (const auto code = value.get_object().get(object)) {
    if (code != simdjson::INCORRECT_TYPE) return FailJson(code);
    return Fail(offset, "expected an object: " + std::string(what));
  }
  return ReadMembers(object, offset, what, keys, required, read);
}

template <typename Read>
bool DocumentLoader::ReadArray(ondemand::value value, Read read) {
  const std::size_t offset = OffsetOf(value);
  ondemand::array array;
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

bool DocumentLoader::ReadString(ondemand::value value, std::string_view& text) {
  const std::size_t offset = OffsetOf(value);
  const auto code = value.get_string().get(text);
  if (code == simdjson::INCORRECT_TYPE) return Fail(offset, "expected a string");
  if (code != simdjson::SUCCESS) return Fail(offset, badEscape);
  return true;
}

bool DocumentLoader::ReadText(ondemand::value value, std::string& text) {
  std::string_view raw;
  if (!ReadString(value, raw)) return false;
  text = CleanText(raw);
  return true;
}

bool DocumentLoader::ReadBool(ondemand::value value, bool& flag) {
  const std::size_t offset = OffsetOf(value);
  if (value.get_bool().get(flag) != simdjson::SUCCESS) {
    return Fail(offset, "expected true or false");
  }
  return true;
}

template <typename T>
bool DocumentLoader::ReadUnsigned(ondemand::value value, T& number, T least) {
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

bool DocumentLoader::ReadSigned(ondemand::value value, std::int32_t& number) {
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

bool DocumentLoader::ReadGuid(ondemand::value value, std::uint64_t& guid) {
  const std::size_t offset = OffsetOf(value);
  std::string_view text;
  if (!ReadString(value, text)) return false;
  const auto parsed = ParseGuid(text);
  if (!parsed) return Fail(offset, "not a GUID, expected \"0x\" and 1 to 16 hexadecimal digits");
  guid = *parsed;
  return true;
}

bool DocumentLoader::ReadSpeed(ondemand::value value, std::uint32_t& speed) {
  const std::size_t offset = OffsetOf(value);
  ondemand::json_type type{};
  if (const auto code = value.type().get(type)) return FailJson(code);
  if (type != ondemand::json_type::string) return ReadUnsigned(value, speed);
  std::string_view name;
  if (!ReadString(value, name)) return false;
  const auto code = SpeedCode(name);
  if (!code) {
    return Fail(offset, "unknown speed, expected a name as \"HDR\" or the code as a number");
  }
  speed = *code;
  return true;
}

bool DocumentLoader::ReadType(ondemand::value value, std::uint32_t& type) {
  const std::size_t offset = OffsetOf(value);
  std::string_view name;
  if (!ReadString(value, name)) return false;
  if (name == "switch") {
    type = NodeTypeSwitch;
  } else if (name == "ca") {
    type = NodeTypeCA;
  } else if (name == "router") {
    type = NodeTypeRouter;
  } else {
    return Fail(offset, R"(unknown node type, expected "switch", "ca" or "router")");
  }
  return true;
}

bool DocumentLoader::ReadFormat(ondemand::value value) {
  const std::size_t offset = OffsetOf(value);
  std::string_view format;
  if (!ReadString(value, format)) return false;
  return format == "fabscope-fabric" ||
         Fail(offset, "not a fabric document, expected \"fabscope-fabric\"");
}

bool DocumentLoader::ReadVersion(ondemand::value value) {
  const std::size_t offset = OffsetOf(value);
  std::uint64_t version = 0;
  if (value.get_uint64().get(version) != simdjson::SUCCESS || version != 1) {
    return Fail(offset, "unknown version of the format, expected 1");
  }
  return true;
}

bool DocumentLoader::ReadNodeMember(std::string_view key, ondemand::value value, NodeSpec& node) {
  if (key == "guid") return ReadGuid(value, node.guid);
  if (key == "type") return ReadType(value, node.type);
  if (key == "name") return ReadText(value, node.name);
  if (key == "numPorts") return ReadUnsigned(value, node.numPorts);
  if (key == "systemGuid") return ReadGuid(value, node.systemGuid.emplace());
  if (key == "displayName") return ReadText(value, node.displayName.emplace());
  if (key == "smdbRank") return ReadUnsigned(value, node.smdbRank);
  if (key == "special") return ReadBool(value, node.special);
  if (key == "multiAsic") return ReadBool(value, node.multiAsic);
  if (key == "asic") return ReadText(value, node.asic);
  if (key == "planesNumber") return ReadSigned(value, node.planesNumber);
  if (key == "suitablePlane") return ReadSigned(value, node.suitablePlane);
  if (key == "planes") {
    std::vector<std::int32_t>& planes = node.planes.emplace();
    return ReadArray(value,
                     [&](ondemand::value item) { return ReadSigned(item, planes.emplace_back()); });
  }
  return ReadArray(
      value, [&](ondemand::value item) { return ReadUnsigned(item, node.flids.emplace_back()); });
}

bool DocumentLoader::ReadNode(ondemand::value value) {
  const std::size_t offset = OffsetOf(value);
  std::size_t guidOffset = offset;
  NodeSpec node;
  std::vector<PlacedPort> ports;
  const auto readMember = [&](std::string_view key, ondemand::value member) {
    if (key == "guid") guidOffset = OffsetOf(member);
    if (key != "ports") return ReadNodeMember(key, member, node);
    return ReadArray(member,
                     [&](ondemand::value item) { return ReadPort(item, ports.emplace_back()); });
  };
  if (!ReadObject(value, "a node", nodeKeys, 4, readMember)) return false;

  if (names_ != nullptr) {
    if (const auto named = names_->find(node.guid); named != names_->end()) {
      node.name = named->second;
      node.displayName.reset();
    }
  }
  const std::uint64_t guid = node.guid;
  if (!Apply(guidOffset, builder_.AddNode(std::move(node)))) return false;
  return std::all_of(ports.begin(), ports.end(), [&](const PlacedPort& port) {
    return Apply(port.offset, builder_.SetPort(guid, port.spec));
  });
}

bool DocumentLoader::ReadPort(ondemand::value value, PlacedPort& port) {
  port.offset = OffsetOf(value);
  PortSpec& spec = port.spec;
  return ReadObject(value, "a port", portKeys, 1,
                    [&](std::string_view key, ondemand::value member) {
                      if (key == "num") return ReadPortNumber(member, spec.num);
                      if (key == "state") return ReadUnsigned(member, spec.state.emplace());
                      if (key == "speed") return ReadSpeed(member, spec.speed.emplace());
                      if (key == "symmetric") return ReadBool(member, spec.symmetric.emplace());
                      if (key == "fnm") return ReadBool(member, spec.fnm.emplace());
                      if (key == "fnm1") return ReadBool(member, spec.fnm1.emplace());
                      if (key == "inSubFabric") return ReadBool(member, spec.inSubFabric.emplace());
                      if (key == "planeMultiplicity")
                        return ReadSigned(member, spec.planeMultiplicity.emplace());
                      return ReadSigned(member, spec.group.emplace());
                    });
}

bool DocumentLoader::ReadLink(ondemand::value value) {
  PlacedLink& link = links_.emplace_back();
  link.offset = OffsetOf(value);
  LinkSpec& spec = link.spec;
  return ReadObject(value, "a link", linkKeys, 4,
                    [&](std::string_view key, ondemand::value member) {
                      if (key == "a") return ReadGuid(member, spec.a.guid);
                      if (key == "aPort") return ReadPortNumber(member, spec.a.num);
                      if (key == "b") return ReadGuid(member, spec.b.guid);
                      if (key == "bPort") return ReadPortNumber(member, spec.b.num);
                      if (key == "speed") return ReadSpeed(member, spec.speed);
                      return ReadBool(member, spec.symmetric);
                    });
}

bool DocumentLoader::ReadPortRef(ondemand::value value, PortRef& port) {
  const std::size_t offset = OffsetOf(value);
  std::size_t count = 0;
  const bool read = ReadArray(value, [&](ondemand::value item) {
    ++count;
    if (count == 1) return ReadGuid(item, port.guid);
    return count > 2 || ReadPortNumber(item, port.num);
  });
  if (read && count != 2) return Fail(offset, "expected a port as [GUID, port number]");
  return read;
}

bool DocumentLoader::ReadAPort(ondemand::value value) {
  PlacedAPort& aport = aports_.emplace_back();
  aport.offset = OffsetOf(value);
  return ReadObject(value, "an aggregated port", aportKeys, 1,
                    [&](std::string_view key, ondemand::value member) {
                      if (key == "asymmetry") return ReadUnsigned(member, aport.asymmetry);
                      return ReadArray(member, [&](ondemand::value item) {
                        return ReadPortRef(item, aport.ports.emplace_back());
                      });
                    });
}

bool DocumentLoader::AddLinksAndAPorts() {
  builder_.ReserveLinks(links_.size());
  return std::all_of(links_.begin(), links_.end(),
                     [&](const PlacedLink& link) {
                       return Apply(link.offset, builder_.AddLink(link.spec));
                     }) &&
         std::all_of(aports_.begin(), aports_.end(), [&](const PlacedAPort& aport) {
           return Apply(aport.offset, builder_.AddAPort(aport.ports, aport.asymmetry));
         });
}

bool DocumentLoader::ReadDocument() {
  ondemand::object object;
  if (const auto code = document_.get_object().get(object)) return FailJson(code);
  const std::size_t offset = input_.bytes.find('{');
  const bool read =
      ReadMembers(object, offset, "the document", documentKeys, 3,
                  [&](std::string_view key, ondemand::value value) {
                    if (key == "format") return ReadFormat(value);
                    if (key == "version") return ReadVersion(value);
                    if (key == "nodes") {
                      return ReadArray(value, [&](ondemand::value item) { return ReadNode(item); });
                    }
                    if (key == "links") {
                      return ReadArray(value, [&](ondemand::value item) { return ReadLink(item); });
                    }
                    return ReadArray(value, [&](ondemand::value item) { return ReadAPort(item); });
                  });
  if (!read) return false;
  // Behind the last token there is no location left.
  const char* rest = nullptr;
  if (document_.current_location().get(rest) == simdjson::SUCCESS) {
    return Fail(OffsetOf(rest), "malformed JSON: something stands behind the document");
  }
  return AddLinksAndAPorts();
}

MaybeError DocumentLoader::Load() {
  const std::size_t start = input_.Start();
  const simdjson::padded_string_view text(input_.bytes.data() + start, input_.bytes.size() - start,
                                          input_.bytes.capacity() - start);
  if (const auto code = parser_.iterate(text).get(document_)) {
    FailJson(code);
  } else {
    isOpen_ = true;
    ReadDocument();
  }
  return error_;
}

}  // namespace

MaybeError LoadFabricDocument(const InputText& input, const NodeNameMap* names,
                              FabricBuilder& builder) {
  return DocumentLoader(input, names, builder).Load();
}

}  // namespace fabscope
