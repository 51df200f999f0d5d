// Reading a fabric document.
//
// Links and aggregated ports may stand before the nodes that they name; they are kept until the
// whole document was read.

#include "formats/fabric_document.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "formats/json_reader.h"
#include "formats/link_speeds.h"
#include "formats/node_kinds.h"
#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

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

class DocumentLoader final : JsonReader {
 public:
  DocumentLoader(const InputText& input, const NodeNameMap* names, FabricBuilder& builder,
                 Warnings& warnings)
      : JsonReader(input), names_(names), builder_(builder), warnings_(warnings) {}

  MaybeError Load();

 private:
  bool Apply(std::size_t offset, FabricBuilder::Problem problem) {
    return !problem || Fail(offset, std::move(*problem));
  }

  bool ReadSpeed(Value value, std::uint32_t& speed);
  bool ReadType(Value value, std::uint8_t& type);

  bool ReadFormat(Value value);
  bool ReadNode(Value value);
  bool ReadNodeMember(std::string_view key, Value value, NodeSpec& node);
  bool ReadNodeText(Value value, std::string& text);
  bool ReadPort(Value value, PlacedPort& port);
  bool ReadLink(Value value);
  bool ReadAPort(Value value);
  bool ReadPortRef(Value value, PortRef& port);
  bool AddLinksAndAPorts();

  const NodeNameMap* names_;
  FabricBuilder& builder_;
  Warnings& warnings_;
  std::vector<PlacedLink> links_;
  std::vector<PlacedAPort> aports_;
};

bool DocumentLoader::ReadSpeed(Value value, std::uint32_t& speed) {
  const std::size_t offset = OffsetOf(value);
  simdjson::ondemand::json_type type{};
  if (const auto code = value.type().get(type)) return FailJson(code);
  if (type != simdjson::ondemand::json_type::string) return ReadUnsigned(value, speed);
  std::string_view name;
  if (!ReadString(value, name)) return false;
  const auto code = SpeedCode(name);
  if (!code) {
    return Fail(offset, "unknown speed, expected a name as \"HDR\" or the code as a number");
  }
  speed = *code;
  return true;
}

bool DocumentLoader::ReadType(Value value, std::uint8_t& type) {
  const std::size_t offset = OffsetOf(value);
  std::string_view name;
  if (!ReadString(value, name)) return false;
  for (const NodeKind& kind : nodeKinds) {
    if (name == kind.name) {
      type = kind.type;
      return true;
    }
  }
  return Fail(offset, R"(unknown node type, expected "switch", "ca" or "router")");
}

bool DocumentLoader::ReadFormat(Value value) {
  const std::size_t offset = OffsetOf(value);
  std::string_view format;
  if (!ReadString(value, format)) return false;
  return format == "fabscope-fabric" ||
         Fail(offset, "not a fabric document, expected \"fabscope-fabric\"");
}

bool DocumentLoader::ReadNodeText(Value value, std::string& text) {
  const std::size_t offset = OffsetOf(value);
  if (!ReadText(value, text)) return false;
  if (CutText(text) && warnings_.Count(WarningKind::LongText)) {
    warnings_.Add(LineOf(offset), "text longer than 256 bytes, cut there");
  }
  return true;
}

bool DocumentLoader::ReadNodeMember(std::string_view key, Value value, NodeSpec& node) {
  if (key == "guid") return ReadGuid(value, node.guid);
  if (key == "type") return ReadType(value, node.type);
  if (key == "name") return ReadNodeText(value, node.name);
  if (key == "numPorts") return ReadUnsigned(value, node.numPorts);
  if (key == "systemGuid") return ReadGuid(value, node.systemGuid.emplace());
  if (key == "displayName") return ReadNodeText(value, node.displayName.emplace());
  if (key == "smdbRank") return ReadUnsigned(value, node.smdbRank);
  if (key == "special") return ReadBool(value, node.special);
  if (key == "multiAsic") return ReadBool(value, node.multiAsic);
  if (key == "asic") return ReadNodeText(value, node.asic);
  if (key == "planesNumber") return ReadSigned(value, node.planesNumber);
  if (key == "suitablePlane") return ReadSigned(value, node.suitablePlane);
  if (key == "planes") {
    std::vector<std::int32_t>& planes = node.planes.emplace();
    return ReadArray(value, [&](Value item) { return ReadSigned(item, planes.emplace_back()); });
  }
  return ReadArray(value,
                   [&](Value item) { return ReadUnsigned(item, node.flids.emplace_back()); });
}

bool DocumentLoader::ReadNode(Value value) {
  const std::size_t offset = OffsetOf(value);
  std::size_t guidOffset = offset;
  NodeSpec node;
  std::vector<PlacedPort> ports;
  const auto readMember = [&](std::string_view key, Value member) {
    if (key == "guid") guidOffset = OffsetOf(member);
    if (key != "ports") return ReadNodeMember(key, member, node);
    return ReadArray(member, [&](Value item) { return ReadPort(item, ports.emplace_back()); });
  };
  if (!ReadObject(value, "a node", nodeKeys, 4, readMember)) return false;

  if (TakeMappedName(names_, node.guid, node.name)) node.displayName.reset();
  const std::uint64_t guid = node.guid;
  if (!Apply(guidOffset, builder_.AddNode(node))) return false;
  return std::all_of(ports.begin(), ports.end(), [&](const PlacedPort& port) {
    return Apply(port.offset, builder_.SetPort(guid, port.spec));
  });
}

bool DocumentLoader::ReadPort(Value value, PlacedPort& port) {
  port.offset = OffsetOf(value);
  PortSpec& spec = port.spec;
  return ReadObject(value, "a port", portKeys, 1, [&](std::string_view key, Value member) {
    if (key == "num") return ReadPortNumber(member, spec.num);
    if (key == "state") return ReadUnsigned(member, spec.state.emplace());
    if (key == "speed") return ReadSpeed(member, spec.speed.emplace());
    if (key == "symmetric") return ReadBool(member, spec.symmetric.emplace());
    if (key == "fnm") return ReadBool(member, spec.fnm.emplace());
    if (key == "fnm1") return ReadBool(member, spec.fnm1.emplace());
    if (key == "inSubFabric") return ReadBool(member, spec.inSubFabric.emplace());
    if (key == "planeMultiplicity") return ReadSigned(member, spec.planeMultiplicity.emplace());
    return ReadSigned(member, spec.group.emplace());
  });
}

bool DocumentLoader::ReadLink(Value value) {
  PlacedLink& link = links_.emplace_back();
  link.offset = OffsetOf(value);
  LinkSpec& spec = link.spec;
  return ReadObject(value, "a link", linkKeys, 4, [&](std::string_view key, Value member) {
    if (key == "a") return ReadGuid(member, spec.a.guid);
    if (key == "aPort") return ReadPortNumber(member, spec.a.num);
    if (key == "b") return ReadGuid(member, spec.b.guid);
    if (key == "bPort") return ReadPortNumber(member, spec.b.num);
    if (key == "speed") return ReadSpeed(member, spec.speed);
    return ReadBool(member, spec.symmetric);
  });
}

bool DocumentLoader::ReadPortRef(Value value, PortRef& port) {
  const std::size_t offset = OffsetOf(value);
  std::size_t count = 0;
  const bool read = ReadArray(value, [&](Value item) {
    ++count;
    if (count == 1) return ReadGuid(item, port.guid);
    return count > 2 || ReadPortNumber(item, port.num);
  });
  if (read && count != 2) return Fail(offset, "expected a port as [GUID, port number]");
  return read;
}

bool DocumentLoader::ReadAPort(Value value) {
  PlacedAPort& aport = aports_.emplace_back();
  aport.offset = OffsetOf(value);
  return ReadObject(
      value, "an aggregated port", aportKeys, 1, [&](std::string_view key, Value member) {
        if (key == "asymmetry") return ReadUnsigned(member, aport.asymmetry);
        return ReadArray(member,
                         [&](Value item) { return ReadPortRef(item, aport.ports.emplace_back()); });
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

MaybeError DocumentLoader::Load() {
  const bool isRead = ReadDocument(documentKeys, 3, [&](std::string_view key, Value value) {
    if (key == "format") return ReadFormat(value);
    if (key == "version") return ReadVersion(value);
    if (key == "nodes") return ReadArray(value, [&](Value item) { return ReadNode(item); });
    if (key == "links") return ReadArray(value, [&](Value item) { return ReadLink(item); });
    return ReadArray(value, [&](Value item) { return ReadAPort(item); });
  });
  if (isRead) AddLinksAndAPorts();
  return std::move(Error());
}

}  // namespace

bool IsFabricDocument(Input& input) {
  for (;;) {
    std::string_view text = input.Unread();
    if (text.starts_with(ByteOrderMark)) text.remove_prefix(ByteOrderMark.size());
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    // A pipe may have given only a part of the mark yet.
    const bool isKnown = first != std::string_view::npos && !ByteOrderMark.starts_with(text);
    if (isKnown) return text[first] == '{';
    if (text.size() > Input::MostOfALine) return false;
    if (!input.Fill()) return false;
  }
}

MaybeError LoadFabricDocument(const InputText& input, const NodeNameMap* names,
                              FabricBuilder& builder, Warnings& warnings) {
  return DocumentLoader(input, names, builder, warnings).Load();
}

}  // namespace fabscope::internal
