// A topology dump, from its lines to a fabric.
//
// The first pass over the text collects the nodes and, in file order, what every port line says.
// The nodes are then sorted and given to the builder, and the second pass walks the port lines:
// every cable is told twice, once from each end, and the two lines should name each other. When
// they do not, the first line of the file is believed, and the link is marked as not symmetric.

#include "formats/topology_dump.h"

#include <algorithm>
#include <bit>
#include <bitset>
#include <set>
#include <utility>
#include <vector>

#include "fabric/guid.h"
#include "formats/foreign_files.h"
#include "formats/lines.h"
#include "formats/link_speeds.h"
#include "formats/node_order.h"
#include "formats/plain_dump_lines.h"
#include "formats/topology_dump_lines.h"
#include "platform/progress.h"
#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

// Where something stands in the file. A line takes at least a byte, and memory for as many nodes
// and ports as 32 bits can count would be there for no dump.
struct Place {
  std::uint32_t line = 0;
  std::uint32_t offset = 0;
};

// The port lines of a node: those from `first` to before `last`.
struct EndRange {
  std::uint32_t first = 0;
  std::uint32_t last = 0;
};

struct DumpNode {
  std::uint64_t guid = 0;
  std::optional<std::uint64_t> systemGuid;
  std::string name;
  Place guidPlace;
  std::uint32_t type = 0;
  EndRange ends;
  std::uint8_t numPorts = 0;
};

// One end of a cable, as its port line tells it.
struct CableEnd {
  std::uint64_t peerGuid = 0;
  Place peerPortPlace;
  std::uint32_t peerNode = GuidIndex::None;  // its place in the model, once there is one
  std::uint8_t speedBit = NoSpeed;           // speed codes have one bit each
  std::uint8_t port = 0;
  std::uint8_t peerPort = 0;
  bool settled = false;  // the peer's line has dealt with this one

  static constexpr std::uint8_t NoSpeed = 32;
  std::uint32_t Speed() const { return speedBit == NoSpeed ? 0 : std::uint32_t{1} << speedBit; }
};

class DumpLoader {
 public:
  DumpLoader(Input& input, const NodeNameMap* names, const regExp* specialNodes,
             FabricBuilder& builder, Warnings& warnings, bool isFast)
      : lines_(input),
        plainLines_(isFast ? std::optional(PlainDumpLines()) : std::nullopt),
        names_(names),
        specialNodes_(specialNodes),
        builder_(builder),
        warnings_(warnings) {}

  MaybeError Load() {
    if (MaybeError error = ReadLines()) return error;
    if (nodes_.empty()) return lines_.ErrorAt(1, 0, foreignFile_.Tell());
    if (MaybeError error = AddNodes()) return error;
    return AddLinks();
  }

 private:
  enum class Record { None, Node, LeftOut };  // what a port line would belong to

  MaybeError ReadLines();
  void ReadPlainLines();
  bool TakePlainLine(PlainDumpLines::Kind kind, const PlainDumpLines::Line& line,
                     std::size_t number);
  void AddEnd(std::uint64_t peerGuid, Place peerPortPlace, std::uint8_t speedBit, std::uint8_t port,
              std::uint8_t peerPort);
  MaybeError ReadLine(const Line& line);
  MaybeError ReadNode(const Line& line);
  void BeginNode(const DumpNodeLine& parsed, Place guidPlace);
  MaybeError ReadPort(const Line& line);
  void LeaveOutNode(const Line& line);
  std::vector<std::uint32_t> SortedNodes() const;
  MaybeError AddNodes();
  InputError NodeGivenTwice(const DumpNode& node, std::string message) const;
  MaybeError AddLinks();
  MaybeError AddLink(const PortPlace& here, std::uint64_t guid, const CableEnd& end);
  CableEnd* FindEnd(const PortPlace& port);

  MaybeError Fail(const Line& line, MaybeProblem problem) const {
    if (!problem) return std::nullopt;
    return lines_.ErrorAt(line.number, problem->offset, problem->message);
  }
  InputError ErrorAt(const Place& place, std::string message) const {
    return lines_.ErrorAt(place.line, place.offset, std::move(message));
  }
  // `text` is only made when the warning will be shown.
  template <typename Text>
  void Warn(WarningKind kind, std::size_t line, Text text) {
    if (warnings_.Count(kind)) warnings_.Add(line, text());
  }

  LineReader lines_;
  std::optional<PlainDumpLines> plainLines_;  // none: every line is looked at closely
  const NodeNameMap* names_;
  const regExp* specialNodes_;
  FabricBuilder& builder_;
  Warnings& warnings_;

  ForeignFile foreignFile_;  // that it may be, as long as there is no node
  Record record_ = Record::None;
  std::optional<std::uint64_t> systemGuid_;  // of the record that has begun
  std::bitset<256> portsSeen_;               // of the current node
  std::vector<DumpNode> nodes_;              // in file order
  std::vector<CableEnd> ends_;               // in file order
  std::set<std::uint64_t> leftOut_;
  std::vector<std::uint32_t> modelOrder_;  // by index in nodes_: the place in the model
  std::vector<EndRange> endsOf_;           // by place in the model
};

Place PlaceOf(const Line& line, std::size_t offset) {
  return {static_cast<std::uint32_t>(line.number), static_cast<std::uint32_t>(offset)};
}

std::string EndText(std::uint64_t guid, std::uint8_t port) {
  return "port " + std::to_string(port) + " of " + GuidText(guid);
}

MaybeError DumpLoader::ReadLines() {
  // Of a port line half a hundred bytes are always there, of a node's record hundreds.
  ends_.reserve(lines_.GetInput().GetExpectedSize() / 50);
  nodes_.reserve(lines_.GetInput().GetExpectedSize() / 400);
  MaybeError error;
  for (Line line; !error && lines_.Next(line);) {
    error = ReadLine(line);
    if (!error && plainLines_) ReadPlainLines();
  }
  return lines_.Finish(std::move(error));
}

// All plain lines up to one that is not, or to the end of what was read.
void DumpLoader::ReadPlainLines() {
  if (nodes_.empty()) return;  // the file may still be of another kind
  const std::string_view ahead = lines_.Ahead();
  const char* at = ahead.data();
  const char* const end = at + ahead.size();
  const std::size_t linesRead = lines_.LinesRead();
  std::size_t lines = 0;
  PlainDumpLines::Line line;
  while (end - at >= PlainDumpLines::Ahead) {
    const PlainDumpLines::Kind kind = plainLines_->Read(at, end, line);
    if (!TakePlainLine(kind, line, linesRead + lines + 1)) break;
    at = line.next;
    ++lines;
  }
  lines_.Skip(lines, static_cast<std::size_t>(at - ahead.data()));
}

// What ReadLine does with such a line; false where there is more to it.
bool DumpLoader::TakePlainLine(PlainDumpLines::Kind kind, const PlainDumpLines::Line& line,
                               std::size_t number) {
  switch (kind) {
    case PlainDumpLines::Kind::Odd:
      return false;
    case PlainDumpLines::Kind::Ignored:
      return true;
    case PlainDumpLines::Kind::VendorField:
      systemGuid_.reset();
      break;
    case PlainDumpLines::Kind::SystemGuid:
      systemGuid_ = line.guid;
      break;
    case PlainDumpLines::Kind::NodeGuid:
      break;
    case PlainDumpLines::Kind::Node:
      BeginNode({line.type, line.numPorts, line.guid, line.guidOffset, line.name},
                {static_cast<std::uint32_t>(number), line.guidOffset});
      return true;
    case PlainDumpLines::Kind::Port:
      if (record_ != Record::Node || line.port > nodes_.back().numPorts ||
          portsSeen_.test(line.port)) {
        return false;
      }
      AddEnd(line.guid, {static_cast<std::uint32_t>(number), line.peerPortOffset}, line.speedBit,
             line.port, line.peerPort);
      return true;
  }
  record_ = Record::None;
  return true;
}

void DumpLoader::AddEnd(std::uint64_t peerGuid, Place peerPortPlace, std::uint8_t speedBit,
                        std::uint8_t port, std::uint8_t peerPort) {
  portsSeen_.set(port);
  ends_.push_back({peerGuid, peerPortPlace, GuidIndex::None, speedBit, port, peerPort, false});
  nodes_.back().ends.last = static_cast<std::uint32_t>(ends_.size());
}

MaybeError DumpLoader::ReadLine(const Line& line) {
  if (nodes_.empty()) foreignFile_.Look(line.text);
  if (!line.hasEnd && IsCutLine(line.text)) {
    return lines_.ErrorAtEnd("the file ends in the middle of a line");
  }
  const DumpLineKind kind = KindOfDumpLine(line.text);
  switch (kind) {
    case DumpLineKind::Ignored:
      return std::nullopt;
    case DumpLineKind::VendorField:
    case DumpLineKind::SystemGuid:
    case DumpLineKind::NodeGuid: {
      std::uint64_t value = 0;
      if (MaybeError error = Fail(line, ParseFieldLine(line.text, line.offset, value))) {
        return error;
      }
      // A record begins with its vendor; what a cut one has left behind is not this one's.
      if (kind == DumpLineKind::VendorField) systemGuid_.reset();
      if (kind == DumpLineKind::SystemGuid) systemGuid_ = value;
      record_ = Record::None;
      return std::nullopt;
    }
    case DumpLineKind::Node:
      return ReadNode(line);
    case DumpLineKind::UnknownNode:
      LeaveOutNode(line);
      return std::nullopt;
    case DumpLineKind::Port:
      return ReadPort(line);
    case DumpLineKind::Unknown:
      Warn(WarningKind::UnknownLine, line.number, [] { return "line of no known kind, left out"; });
      return std::nullopt;
  }
  return std::nullopt;
}

MaybeError DumpLoader::ReadNode(const Line& line) {
  DumpNodeLine parsed;
  if (MaybeError error = Fail(line, ParseNodeLine(line.text, line.offset, parsed))) return error;
  BeginNode(parsed, PlaceOf(line, parsed.guidOffset));
  return std::nullopt;
}

void DumpLoader::BeginNode(const DumpNodeLine& parsed, Place guidPlace) {
  ReportProgress("reading", lines_.GetInput().GetDone(), lines_.GetInput().GetTotal());
  DumpNode& node = nodes_.emplace_back();
  node.guid = parsed.guid;
  node.guidPlace = guidPlace;
  node.systemGuid = std::exchange(systemGuid_, std::nullopt);
  node.type = parsed.type;
  node.numPorts = parsed.numPorts;
  node.ends.first = node.ends.last = static_cast<std::uint32_t>(ends_.size());
  node.name = CleanText(parsed.name);
  if (CutText(node.name)) {
    Warn(WarningKind::LongText, guidPlace.line,
         [] { return "name longer than 256 bytes, cut there"; });
  }
  TakeMappedName(names_, node.guid, node.name);
  record_ = Record::Node;
  portsSeen_.reset();
}

void DumpLoader::LeaveOutNode(const Line& line) {
  systemGuid_.reset();
  record_ = Record::LeftOut;
  const std::string_view text = line.text;
  const std::size_t quote = text.find('"');
  const std::string_view id = text.substr(quote + 1, text.find('"', quote + 1) - quote - 1);
  if (id.size() > 2) {
    if (const auto guid = ParseHex(id.substr(2))) leftOut_.insert(*guid);
  }
  Warn(WarningKind::UnknownNodeType, line.number,
       [] { return "node of unknown type, left out with its links"; });
}

MaybeError DumpLoader::ReadPort(const Line& line) {
  if (record_ == Record::LeftOut) return std::nullopt;
  if (record_ == Record::None) {
    Warn(WarningKind::LineOutsideRecord, line.number,
         [] { return "port line outside of a node's record, left out"; });
    return std::nullopt;
  }
  DumpPortLine parsed;
  if (MaybeError error = Fail(line, ParsePortLine(line.text, line.offset, parsed))) return error;
  DumpNode& node = nodes_.back();
  if (parsed.port > node.numPorts) {
    return lines_.ErrorAt(line.number, parsed.portOffset,
                          "port number out of range, the node has " +
                              std::to_string(node.numPorts) +
                              (node.numPorts == 1 ? " port" : " ports"));
  }
  if (portsSeen_.test(parsed.port)) {
    Warn(WarningKind::RepeatedPort, line.number,
         [&] { return EndText(node.guid, parsed.port) + " is given twice, the first line holds"; });
    return std::nullopt;
  }

  std::uint8_t speedBit = CableEnd::NoSpeed;
  if (!parsed.speed.empty()) {
    if (const auto code = SpeedCode(parsed.speed)) {
      speedBit = static_cast<std::uint8_t>(std::countr_zero(*code));
      if (plainLines_) plainLines_->Learn(line.text, speedBit);
    } else {
      Warn(WarningKind::UnknownSpeed, line.number,
           [&] { return "unknown link speed \"" + CleanText(parsed.speed) + "\", taken as none"; });
    }
  }
  AddEnd(parsed.peerGuid, PlaceOf(line, parsed.peerPortOffset), speedBit, parsed.port,
         parsed.peerPort);
  return std::nullopt;
}

std::vector<std::uint32_t> DumpLoader::SortedNodes() const {
  struct Entry {
    NodeOrderKey key;
    std::uint32_t node;
  };
  std::vector<Entry> entries;
  entries.reserve(nodes_.size());
  for (const DumpNode& node : nodes_) {
    entries.push_back({NodeOrderKey(node.name), static_cast<std::uint32_t>(entries.size())});
  }
  std::sort(entries.begin(), entries.end(), [this](const Entry& a, const Entry& b) {
    if (a.key != b.key) return a.key < b.key;
    const DumpNode& nodeA = nodes_[a.node];
    const DumpNode& nodeB = nodes_[b.node];
    return CompareNodeOrder(nodeA.name, nodeA.guid, nodeB.name, nodeB.guid) < 0;
  });
  std::vector<std::uint32_t> sorted;
  sorted.reserve(entries.size());
  for (const Entry& entry : entries) sorted.push_back(entry.node);
  return sorted;
}

MaybeError DumpLoader::AddNodes() {
  modelOrder_.resize(nodes_.size());
  endsOf_.reserve(nodes_.size());
  builder_.ReserveNodes(nodes_.size());
  for (const std::uint32_t index : SortedNodes()) {
    DumpNode& node = nodes_[index];
    modelOrder_[index] = static_cast<std::uint32_t>(endsOf_.size());
    endsOf_.push_back(node.ends);
    NodeSpec spec;
    spec.guid = node.guid;
    spec.systemGuid = node.systemGuid;
    spec.type = node.type;
    spec.numPorts = node.numPorts;
    spec.special =
        node.type == NodeTypeCA && specialNodes_ != nullptr && specialNodes_->Matches(node.name);
    spec.name = std::move(node.name);
    if (auto problem = builder_.AddNode(std::move(spec))) {
      return NodeGivenTwice(node, std::move(*problem));
    }
  }
  return std::nullopt;
}

// Of records with one GUID the last one in the file is at fault.
InputError DumpLoader::NodeGivenTwice(const DumpNode& node, std::string message) const {
  const auto last = std::find_if(nodes_.rbegin(), nodes_.rend(),
                                 [&](const DumpNode& other) { return other.guid == node.guid; });
  return ErrorAt(last->guidPlace, std::move(message));
}

CableEnd* DumpLoader::FindEnd(const PortPlace& port) {
  const EndRange range = endsOf_[port.node];
  // Port lines mostly come in port order without gaps.
  const std::uint32_t guess = range.first + port.num - 1;
  if (guess < range.last && ends_[guess].port == port.num) return &ends_[guess];
  for (std::uint32_t i = range.first; i < range.last; ++i) {
    if (ends_[i].port == port.num) return &ends_[i];
  }
  return nullptr;
}

MaybeError DumpLoader::AddLinks() {
  builder_.ReserveLinks(ends_.size() / 2 + 1);
  // All in a row: the processor then waits for many places in the table at a time.
  for (CableEnd& end : ends_) end.peerNode = builder_.FindNode(end.peerGuid);
  for (std::size_t i = 0; i < nodes_.size(); ++i) {
    for (std::uint32_t j = nodes_[i].ends.first; j < nodes_[i].ends.last; ++j) {
      CableEnd& end = ends_[j];
      if (end.settled) continue;
      if (MaybeError error = AddLink({modelOrder_[i], end.port}, nodes_[i].guid, end)) return error;
    }
  }
  return std::nullopt;
}

MaybeError DumpLoader::AddLink(const PortPlace& here, std::uint64_t guid, const CableEnd& end) {
  const PortPlace there{end.peerNode, end.peerPort};
  const std::size_t line = end.peerPortPlace.line;
  if (there.node == GuidIndex::None) {
    if (leftOut_.contains(end.peerGuid)) return std::nullopt;
    Warn(WarningKind::PeerWithoutRecord, line, [&] {
      return "peer " + GuidText(end.peerGuid) + " has no record of its own, link left out";
    });
    return std::nullopt;
  }
  if (!builder_.HasPort(there)) {
    return ErrorAt(end.peerPortPlace, "port number out of range: " + builder_.NoPortText(there));
  }
  if (here.node == there.node && here.num == there.num) {
    Warn(WarningKind::PortCabledToItself, line,
         [&] { return EndText(guid, here.num) + " is cabled to itself, link left out"; });
    return std::nullopt;
  }
  if (builder_.HasLink(here) || builder_.HasLink(there)) {
    Warn(WarningKind::EndsDisagree, line, [&] {
      return EndText(guid, here.num) + " names " + EndText(end.peerGuid, there.num) +
             ", but an earlier line linked one of them otherwise; link left out";
    });
    return std::nullopt;
  }

  CableEnd* other = FindEnd(there);
  const bool agree = other != nullptr && other->peerGuid == guid && other->peerPort == here.num;
  std::uint32_t speed = end.Speed();
  if (agree) {
    if (speed == 0) speed = other->Speed();
    other->settled = true;
  } else {
    Warn(WarningKind::EndsDisagree, line, [&] {
      return EndText(guid, here.num) + " names " + EndText(end.peerGuid, there.num) +
             ", which names " +
             (other != nullptr ? EndText(other->peerGuid, other->peerPort) : "nothing") +
             "; the link stands, not symmetric";
    });
  }
  if (auto problem = builder_.AddLink(here, there, speed, agree)) {
    return ErrorAt(end.peerPortPlace, std::move(*problem));
  }
  return std::nullopt;
}

}  // namespace

MaybeError LoadTopologyDump(Input& input, const NodeNameMap* names, const regExp* specialNodes,
                            FabricBuilder& builder, Warnings& warnings) {
  return DumpLoader(input, names, specialNodes, builder, warnings, true).Load();
}

MaybeError LoadTopologyDumpClosely(Input& input, const NodeNameMap* names,
                                   const regExp* specialNodes, FabricBuilder& builder,
                                   Warnings& warnings) {
  return DumpLoader(input, names, specialNodes, builder, warnings, false).Load();
}

}  // namespace fabscope::internal
