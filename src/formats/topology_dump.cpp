// A topology dump, from its lines to a fabric.
//
// The first pass over the text collects the nodes and, in file order, what every port line says.
// The nodes are then sorted and given to the builder, and the second pass walks the port lines:
// every cable is told twice, once from each end, and the two lines should name each other. When
// they do not, the first line of the file is believed, and the link is marked as not symmetric.

#include "formats/topology_dump.h"

#include <algorithm>
#include <bitset>
#include <unordered_set>
#include <utility>
#include <vector>

#include "fabric/guid.h"
#include "formats/lines.h"
#include "formats/link_speeds.h"
#include "formats/node_order.h"
#include "formats/text_fields.h"
#include "formats/topology_dump_lines.h"
#include "platform/progress.h"

namespace fabscope {
namespace {

struct DumpNode {
  std::uint64_t guid = 0;
  std::optional<std::uint64_t> systemGuid;
  std::string name;
  std::size_t guidOffset = 0;
  std::uint32_t type = 0;
  std::uint8_t numPorts = 0;
  std::size_t firstEnd = 0;  // its port lines are ends_[firstEnd] to ends_[lastEnd - 1]
  std::size_t lastEnd = 0;
};

// One end of a cable, as its port line tells it.
struct CableEnd {
  std::uint64_t guid = 0;
  std::uint64_t peerGuid = 0;
  std::size_t peerPortOffset = 0;
  std::uint32_t speed = 0;
  std::uint8_t port = 0;
  std::uint8_t peerPort = 0;
  bool settled = false;  // the peer's line has dealt with this one
};

class DumpLoader {
 public:
  DumpLoader(const InputText& input, const NodeNameMap* names, const regExp* specialNodes,
             FabricBuilder& builder, Warnings& warnings)
      : input_(input),
        names_(names),
        specialNodes_(specialNodes),
        builder_(builder),
        warnings_(warnings) {}

  MaybeError Load() {
    if (MaybeError error = ReadLines()) return error;
    if (nodes_.empty()) return NoNodeError();
    if (MaybeError error = AddNodes()) return error;
    return AddLinks();
  }

 private:
  enum class Record { None, Node, LeftOut };  // what a port line would belong to

  MaybeError ReadLines();
  MaybeError ReadLine(std::string_view line, std::size_t offset);
  MaybeError ReadNode(std::string_view line, std::size_t offset);
  MaybeError ReadPort(std::string_view line, std::size_t offset);
  void LeaveOutNode(std::string_view line, std::size_t offset);
  MaybeError AddNodes();
  MaybeError AddLinks();
  MaybeError AddLink(CableEnd& end);
  CableEnd* FindEnd(std::uint64_t guid, std::uint8_t port);
  InputError NoNodeError() const;

  MaybeError Fail(MaybeProblem problem) const {
    if (!problem) return std::nullopt;
    return input_.ErrorAt(problem->offset, std::move(problem->message));
  }
  // `text` is only made when the warning will be shown.
  template <typename Text>
  void Warn(WarningKind kind, std::size_t offset, Text text) {
    if (warnings_.Count(kind)) warnings_.Add(LineOf(input_.bytes, offset), text());
  }

  const InputText& input_;
  const NodeNameMap* names_;
  const regExp* specialNodes_;
  FabricBuilder& builder_;
  Warnings& warnings_;

  Record record_ = Record::None;
  std::optional<std::uint64_t> systemGuid_;  // of the record that has begun
  std::bitset<256> portsSeen_;               // of the current node
  std::vector<DumpNode> nodes_;
  std::vector<CableEnd> ends_;  // in file order
  std::unordered_set<std::uint64_t> leftOut_;
  std::unordered_map<std::uint64_t, std::pair<std::size_t, std::size_t>> endsByGuid_;
};

std::string EndText(std::uint64_t guid, std::uint8_t port) {
  return "port " + std::to_string(port) + " of " + GuidText(guid);
}

MaybeError DumpLoader::ReadLines() {
  MaybeError error;
  ForEachLine(input_, [&](std::string_view line, std::size_t offset) {
    error = ReadLine(line, offset);
    return !error;
  });
  return error;
}

MaybeError DumpLoader::ReadLine(std::string_view line, std::size_t offset) {
  const bool hasNoLineEnd = offset + line.size() == input_.bytes.size();
  if (hasNoLineEnd && IsCutLine(line)) {
    return input_.ErrorAt(input_.bytes.size(), "the file ends in the middle of a line");
  }
  switch (KindOfDumpLine(line)) {
    case DumpLineKind::Ignored:
      return std::nullopt;
    case DumpLineKind::VendorField:
    case DumpLineKind::SystemGuid:
    case DumpLineKind::NodeGuid: {
      std::uint64_t value = 0;
      if (MaybeError error = Fail(ParseFieldLine(line, offset, value))) return error;
      // A record begins with its vendor; what a cut one has left behind is not this one's.
      const DumpLineKind kind = KindOfDumpLine(line);
      if (kind == DumpLineKind::VendorField) systemGuid_.reset();
      if (kind == DumpLineKind::SystemGuid) systemGuid_ = value;
      record_ = Record::None;
      return std::nullopt;
    }
    case DumpLineKind::Node:
      ReportProgress("reading", offset, input_.bytes.size());
      return ReadNode(line, offset);
    case DumpLineKind::UnknownNode:
      LeaveOutNode(line, offset);
      return std::nullopt;
    case DumpLineKind::Port:
      return ReadPort(line, offset);
    case DumpLineKind::Unknown:
      Warn(WarningKind::UnknownLine, offset, [] { return "line of no known kind, left out"; });
      return std::nullopt;
  }
  return std::nullopt;
}

MaybeError DumpLoader::ReadNode(std::string_view line, std::size_t offset) {
  DumpNodeLine parsed;
  if (MaybeError error = Fail(ParseNodeLine(line, offset, parsed))) return error;
  DumpNode& node = nodes_.emplace_back();
  node.guid = parsed.guid;
  node.guidOffset = parsed.guidOffset;
  node.systemGuid = std::exchange(systemGuid_, std::nullopt);
  node.type = parsed.type;
  node.numPorts = parsed.numPorts;
  node.firstEnd = node.lastEnd = ends_.size();
  node.name = CleanText(parsed.name);
  if (names_ != nullptr) {
    if (const auto named = names_->find(node.guid); named != names_->end()) {
      node.name = named->second;
    }
  }
  record_ = Record::Node;
  portsSeen_.reset();
  return std::nullopt;
}

void DumpLoader::LeaveOutNode(std::string_view line, std::size_t offset) {
  systemGuid_.reset();
  record_ = Record::LeftOut;
  const std::size_t quote = line.find('"');
  const std::string_view id = line.substr(quote + 1, line.find('"', quote + 1) - quote - 1);
  if (id.size() > 2) {
    if (const auto guid = ParseHex(id.substr(2))) leftOut_.insert(*guid);
  }
  Warn(WarningKind::UnknownNodeType, offset,
       [] { return "node of unknown type, left out with its links"; });
}

MaybeError DumpLoader::ReadPort(std::string_view line, std::size_t offset) {
  if (record_ == Record::LeftOut) return std::nullopt;
  if (record_ == Record::None) {
    Warn(WarningKind::LineOutsideRecord, offset,
         [] { return "port line outside of a node's record, left out"; });
    return std::nullopt;
  }
  DumpPortLine parsed;
  if (MaybeError error = Fail(ParsePortLine(line, offset, parsed))) return error;
  DumpNode& node = nodes_.back();
  if (parsed.port > node.numPorts) {
    return input_.ErrorAt(parsed.portOffset, "port number out of range, the node has " +
                                                 std::to_string(node.numPorts) +
                                                 (node.numPorts == 1 ? " port" : " ports"));
  }
  if (portsSeen_.test(parsed.port)) {
    Warn(WarningKind::RepeatedPort, offset,
         [&] { return EndText(node.guid, parsed.port) + " is given twice, the first line holds"; });
    return std::nullopt;
  }
  portsSeen_.set(parsed.port);

  std::uint32_t speed = 0;
  if (!parsed.speed.empty()) {
    if (const auto code = SpeedCode(parsed.speed)) {
      speed = *code;
    } else {
      Warn(WarningKind::UnknownSpeed, offset,
           [&] { return "unknown link speed \"" + CleanText(parsed.speed) + "\", taken as none"; });
    }
  }
  ends_.push_back({node.guid, parsed.peerGuid, parsed.peerPortOffset, speed, parsed.port,
                   parsed.peerPort, false});
  node.lastEnd = ends_.size();
  return std::nullopt;
}

MaybeError DumpLoader::AddNodes() {
  std::vector<DumpNode*> sorted;
  sorted.reserve(nodes_.size());
  for (DumpNode& node : nodes_) sorted.push_back(&node);
  std::sort(sorted.begin(), sorted.end(), [](const DumpNode* a, const DumpNode* b) {
    const int order = CompareNodeOrder(a->name, a->guid, b->name, b->guid);
    return order != 0 ? order < 0 : a->guidOffset < b->guidOffset;
  });

  builder_.ReserveNodes(sorted.size());
  endsByGuid_.reserve(sorted.size());
  for (DumpNode* node : sorted) {
    NodeSpec spec;
    spec.guid = node->guid;
    spec.systemGuid = node->systemGuid;
    spec.type = node->type;
    spec.numPorts = node->numPorts;
    spec.special =
        node->type == NodeTypeCA && specialNodes_ != nullptr && specialNodes_->Matches(node->name);
    spec.name = std::move(node->name);
    if (auto problem = builder_.AddNode(std::move(spec))) {
      // Of two records with one GUID the later one in the file is at fault.
      std::size_t offset = 0;
      for (const DumpNode& other : nodes_) {
        if (other.guid == node->guid) offset = std::max(offset, other.guidOffset);
      }
      return input_.ErrorAt(offset, std::move(*problem));
    }
    endsByGuid_.emplace(node->guid, std::pair(node->firstEnd, node->lastEnd));
  }
  nodes_ = {};
  return std::nullopt;
}

CableEnd* DumpLoader::FindEnd(std::uint64_t guid, std::uint8_t port) {
  const auto found = endsByGuid_.find(guid);
  if (found == endsByGuid_.end()) return nullptr;
  const auto [first, last] = found->second;
  // Port lines mostly come in port order without gaps.
  if (const std::size_t guess = first + port - 1; guess < last && ends_[guess].port == port) {
    return &ends_[guess];
  }
  for (std::size_t i = first; i < last; ++i) {
    if (ends_[i].port == port) return &ends_[i];
  }
  return nullptr;
}

MaybeError DumpLoader::AddLinks() {
  builder_.ReserveLinks(ends_.size() / 2 + 1);
  for (CableEnd& end : ends_) {
    if (MaybeError error = AddLink(end)) return error;
  }
  return std::nullopt;
}

MaybeError DumpLoader::AddLink(CableEnd& end) {
  const PortRef here{end.guid, end.port};
  const PortRef there{end.peerGuid, end.peerPort};
  if (leftOut_.contains(end.peerGuid) && !builder_.HasNode(end.peerGuid)) return std::nullopt;
  if (!builder_.HasNode(end.peerGuid)) {
    Warn(WarningKind::PeerWithoutRecord, end.peerPortOffset, [&] {
      return "peer " + GuidText(end.peerGuid) + " has no record of its own, link left out";
    });
    return std::nullopt;
  }
  if (auto problem = builder_.CheckPort(there)) {
    return input_.ErrorAt(end.peerPortOffset, "port number out of range: " + *problem);
  }
  if (end.settled) return std::nullopt;
  if (here.guid == there.guid && here.num == there.num) {
    Warn(WarningKind::PortCabledToItself, end.peerPortOffset,
         [&] { return EndText(here.guid, here.num) + " is cabled to itself, link left out"; });
    return std::nullopt;
  }
  if (builder_.HasLink(here) || builder_.HasLink(there)) {
    Warn(WarningKind::EndsDisagree, end.peerPortOffset, [&] {
      return EndText(here.guid, here.num) + " names " + EndText(there.guid, there.num) +
             ", but an earlier line linked one of them otherwise; link left out";
    });
    return std::nullopt;
  }

  CableEnd* other = FindEnd(there.guid, there.num);
  const bool agree =
      other != nullptr && other->peerGuid == here.guid && other->peerPort == here.num;
  std::uint32_t speed = end.speed;
  if (agree && speed == 0) speed = other->speed;
  if (!agree) {
    Warn(WarningKind::EndsDisagree, end.peerPortOffset, [&] {
      return EndText(here.guid, here.num) + " names " + EndText(there.guid, there.num) +
             ", which names " +
             (other != nullptr ? EndText(other->peerGuid, other->peerPort) : "nothing") +
             "; the link stands, not symmetric";
    });
  }
  if (other != nullptr && agree) other->settled = true;
  if (auto problem = builder_.AddLink({here, there, speed, agree})) {
    return input_.ErrorAt(end.peerPortOffset, std::move(*problem));
  }
  return std::nullopt;
}

// The commonest wrong files are other lists that the same tools print.
InputError DumpLoader::NoNodeError() const {
  const auto hasLine = [this](auto matches) {
    bool found = false;
    ForEachLine(input_, [&](std::string_view line, std::size_t) {
      found = matches(line);
      return !found;
    });
    return found;
  };
  const auto error = [this](std::string message) {
    return InputError{input_.file, 1, 1, std::move(message)};
  };

  if (input_.bytes.find_first_not_of(" \t\r\n", input_.Start()) == std::string::npos) {
    return error("the file is empty");
  }
  if (input_.bytes.find('\0') != std::string::npos) {
    return error("the file is binary, expected a fabric document (JSON) or a topology dump");
  }
  if (hasLine([](std::string_view line) {
        return (line.starts_with("CA ") || line.starts_with("SW ") || line.starts_with("RT ")) &&
               line.find(" 0x") != std::string_view::npos;
      })) {
    return error(
        "this is the port list of `ibnetdiscover -p`, which does not tell the size of a switch; "
        "give the output of `ibnetdiscover` without options");
  }
  if (hasLine([](std::string_view line) {
        return line.find("==(") != std::string_view::npos &&
               line.find(")==>") != std::string_view::npos;
      })) {
    return error(
        "this is the output of `iblinkinfo`; give the output of `ibnetdiscover` without options");
  }
  return error(
      "no node found, expected a fabric document (JSON) or a topology dump as `ibnetdiscover` "
      "prints it");
}

}  // namespace

MaybeError LoadTopologyDump(const InputText& input, const NodeNameMap* names,
                            const regExp* specialNodes, FabricBuilder& builder,
                            Warnings& warnings) {
  return DumpLoader(input, names, specialNodes, builder, warnings).Load();
}

}  // namespace fabscope
