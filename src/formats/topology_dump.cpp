// A topology dump, from its lines to a fabric.
//
// The first pass over the text collects the nodes and, in file order, what every port line says.
// The nodes are then sorted and given to the builder, and the second pass walks the port lines:
// every cable is told twice, once from each end, and the two lines should name each other. When
// they do not, the first line of the file is believed, and the link is marked as not symmetric.

#include "formats/topology_dump.h"

#include <algorithm>
#include <array>
#include <bit>
#include <bitset>
#include <map>
#include <set>
#include <span>
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

struct DumpNode {
  std::uint64_t guid = 0;
  std::uint64_t systemGuid = 0;
  std::string_view name;
  Place guidPlace;
  std::uint32_t firstEnd = 0;  // its port lines end where those of the next node begin
  std::uint8_t type = 0;
  std::uint8_t numPorts = 0;
  bool hasSystemGuid = false;
};

// One end of a cable, as its port line tells it. There are some hundred thousand, so every byte
// counts.
struct CableEnd {
  std::uint64_t peerGuid = 0;
  std::uint32_t line = 0;
  std::uint8_t peerPortOffset = 0;
  std::uint8_t port = 0;
  std::uint8_t peerPort = 0;
  std::uint8_t speedBit = NoSpeed;  // speed codes have one bit each

  static constexpr std::uint8_t NoSpeed = 32;
  // The peer's port stands farther on; farOffsets_ knows where.
  static constexpr std::uint8_t FarOffset = 255;
  std::uint32_t Speed() const { return speedBit == NoSpeed ? 0 : std::uint32_t{1} << speedBit; }
  // The peer's line has dealt with this one: nobody asks for its port any more.
  void Settle() { port = 0; }
  bool IsSettled() const { return port == 0; }
};

// A node of the model, with its port lines: those from `firstEnd` to before `lastEnd`.
struct PlacedNode {
  std::uint64_t guid = 0;
  std::uint32_t firstEnd = 0;
  std::uint32_t lastEnd = 0;
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
  void AddEnd(const CableEnd& end, std::size_t peerPortOffset);
  MaybeError ReadLine(const Line& line);
  void TakeDate(std::string_view line);
  MaybeError ReadNode(const Line& line);
  void BeginNode(const DumpNodeLine& parsed, Place guidPlace);
  MaybeError ReadPort(const Line& line);
  void LeaveOutNode(const Line& line);
  std::vector<std::uint32_t> SortedNodes() const;
  void ExpectNode(const std::vector<std::uint32_t>& sorted, std::size_t at) const;
  MaybeError AddNodes();
  InputError NodeGivenTwice(const DumpNode& node, std::string message) const;
  MaybeError AddLinks();
  void FindPeers(std::span<const CableEnd> ends, std::span<std::uint32_t> peers);
  MaybeError AddLink(const PortPlace& here, const PortPlace& there, const CableEnd& end);
  MaybeError AddOddLink(const PortPlace& here, const PortPlace& there, const CableEnd& end,
                        const CableEnd* other);
  CableEnd* FindEnd(const PortPlace& port);
  std::uint32_t FindPeer(std::uint64_t guid);
  std::uint32_t EndOfLines(std::uint32_t node) const {
    return node + 1 < nodes_.size() ? nodes_[node + 1].firstEnd
                                    : static_cast<std::uint32_t>(ends_.size());
  }
  Place PeerPortPlace(const CableEnd& end) const {
    const bool isFar = end.peerPortOffset == CableEnd::FarOffset;
    return {end.line, isFar ? farOffsets_.at(end.line) : end.peerPortOffset};
  }

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
  std::optional<std::uint64_t> systemGuid_;            // of the record that has begun
  std::uint8_t numPorts_ = 0;                          // of the current node
  std::bitset<256> portsSeen_;                         // likewise
  std::vector<DumpNode> nodes_;                        // in file order
  std::vector<CableEnd> ends_;                         // in file order
  std::map<std::uint32_t, std::uint32_t> farOffsets_;  // by line: where its peer's port stands
  std::set<std::uint64_t> leftOut_;
  std::vector<std::uint32_t> modelOrder_;  // by index in nodes_: the place in the model
  std::vector<PlacedNode> placed_;         // by place in the model
  std::uint32_t lastPeer_ = 0;
  std::uint32_t peerStride_ = 1;
  std::size_t wrongGuesses_ = 0;  // since the last batch
};

// Sorts what mostly is a few sorted runs one behind the other: a dump tells of the switches in an
// order of their own, and then of the hosts.
template <typename Item, typename IsLess>
void SortRuns(std::vector<Item>& items, IsLess isLess) {
  constexpr std::size_t few = 16;
  std::vector<typename std::vector<Item>::iterator> ends{items.begin()};
  while (ends.back() != items.end() && ends.size() <= few) {
    ends.push_back(std::is_sorted_until(ends.back(), items.end(), isLess));
  }
  if (ends.back() != items.end()) return std::sort(items.begin(), items.end(), isLess);
  for (std::size_t i = 2; i < ends.size(); ++i) {
    std::inplace_merge(items.begin(), ends[i - 1], ends[i], isLess);
  }
}

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
      if (record_ != Record::Node || line.port > numPorts_ || portsSeen_[line.port]) return false;
      AddEnd({.peerGuid = line.guid,
              .line = static_cast<std::uint32_t>(number),
              .port = line.port,
              .peerPort = line.peerPort,
              .speedBit = line.speedBit},
             line.peerPortOffset);
      return true;
  }
  record_ = Record::None;
  return true;
}

void DumpLoader::AddEnd(const CableEnd& end, std::size_t peerPortOffset) {
  portsSeen_[end.port] = true;
  ends_.push_back(end);
  if (peerPortOffset < CableEnd::FarOffset) {
    ends_.back().peerPortOffset = static_cast<std::uint8_t>(peerPortOffset);
  } else {
    ends_.back().peerPortOffset = CableEnd::FarOffset;
    farOffsets_[end.line] = static_cast<std::uint32_t>(peerPortOffset);
  }
}

MaybeError DumpLoader::ReadLine(const Line& line) {
  if (nodes_.empty()) {
    foreignFile_.Look(line.text);
    TakeDate(line.text);
  }
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

// # Topology file: generated on Sat Nov 21 04:39:02 2026
void DumpLoader::TakeDate(std::string_view line) {
  LineCursor cursor(line, 0);
  if (!cursor.Take("# Topology file: generated on ")) return;
  std::string date = CleanText(Trimmed(cursor.Rest()));
  CutText(date);
  builder_.SetDate(std::move(date));
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
  node.hasSystemGuid = systemGuid_.has_value();
  node.systemGuid = std::exchange(systemGuid_, std::nullopt).value_or(0);
  node.type = parsed.type;
  node.numPorts = parsed.numPorts;
  node.firstEnd = static_cast<std::uint32_t>(ends_.size());
  std::string name = CleanText(parsed.name);
  if (CutText(name)) {
    Warn(WarningKind::LongText, guidPlace.line,
         [] { return "name longer than 256 bytes, cut there"; });
  }
  TakeMappedName(names_, node.guid, name);
  node.name = builder_.KeepName(name);
  record_ = Record::Node;
  numPorts_ = node.numPorts;
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
  if (portsSeen_[parsed.port]) {
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
  AddEnd({.peerGuid = parsed.peerGuid,
          .line = static_cast<std::uint32_t>(line.number),
          .port = parsed.port,
          .peerPort = parsed.peerPort,
          .speedBit = speedBit},
         parsed.peerPortOffset);
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
  SortRuns(entries, [this](const Entry& a, const Entry& b) {
    if (a.key != b.key) return a.key < b.key;
    const DumpNode& nodeA = nodes_[a.node];
    const DumpNode& nodeB = nodes_[b.node];
    return CompareNodeOrder(nodeA.name.data(), nodeA.guid, nodeB.name.data(), nodeB.guid) < 0;
  });
  std::vector<std::uint32_t> sorted;
  sorted.reserve(entries.size());
  for (const Entry& entry : entries) sorted.push_back(entry.node);
  return sorted;
}

// Fetches from memory what the next nodes need, while this one is dealt with.
void DumpLoader::ExpectNode(const std::vector<std::uint32_t>& sorted, std::size_t at) const {
  constexpr std::size_t ahead = 16;
  if (at + 2 * ahead >= sorted.size()) return;
  __builtin_prefetch(&nodes_[sorted[at + 2 * ahead]]);
  const DumpNode& next = nodes_[sorted[at + ahead]];
  __builtin_prefetch(next.name.data());
  builder_.ExpectNode(next.guid);
}

MaybeError DumpLoader::AddNodes() {
  modelOrder_.resize(nodes_.size());
  placed_.reserve(nodes_.size());
  builder_.ReserveNodes(nodes_.size());
  NodeSpec spec;
  const std::vector<std::uint32_t> sorted = SortedNodes();
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    ExpectNode(sorted, i);
    const std::uint32_t index = sorted[i];
    const DumpNode& node = nodes_[index];
    modelOrder_[index] = static_cast<std::uint32_t>(placed_.size());
    placed_.push_back({node.guid, node.firstEnd, EndOfLines(index)});
    spec.guid = node.guid;
    spec.systemGuid = node.hasSystemGuid ? std::optional(node.systemGuid) : std::nullopt;
    spec.type = node.type;
    spec.numPorts = node.numPorts;
    spec.special =
        node.type == NodeTypeCA && specialNodes_ != nullptr && specialNodes_->Matches(node.name);
    spec.keptName = node.name;
    if (auto problem = builder_.AddNode(spec)) return NodeGivenTwice(node, std::move(*problem));
  }
  nodes_ = {};  // the links take their place in memory
  return std::nullopt;
}

// Of records with one GUID the last one in the file is at fault.
InputError DumpLoader::NodeGivenTwice(const DumpNode& node, std::string message) const {
  const auto last = std::find_if(nodes_.rbegin(), nodes_.rend(),
                                 [&](const DumpNode& other) { return other.guid == node.guid; });
  return ErrorAt(last->guidPlace, std::move(message));
}

CableEnd* DumpLoader::FindEnd(const PortPlace& port) {
  const PlacedNode& node = placed_[port.node];
  // Port lines mostly come in port order without gaps.
  const std::uint32_t guess = node.firstEnd + port.num - 1;
  if (guess < node.lastEnd && ends_[guess].port == port.num) return &ends_[guess];
  for (std::uint32_t i = node.firstEnd; i < node.lastEnd; ++i) {
    if (ends_[i].port == port.num) return &ends_[i];
  }
  return nullptr;
}

// The peers of a switch's ports mostly stand at equal distances in the model.
std::uint32_t DumpLoader::FindPeer(std::uint64_t guid) {
  const std::uint32_t guess = lastPeer_ + peerStride_;
  const bool isRight = guess < placed_.size() && placed_[guess].guid == guid;
  wrongGuesses_ += isRight ? 0 : 1;
  const std::uint32_t found = isRight ? guess : builder_.FindNode(guid);
  if (found == GuidIndex::None) return found;
  peerStride_ = found - lastPeer_;
  lastPeer_ = found;
  return found;
}

// Where the records are in no order, all that a link needs stands elsewhere in memory. So many
// links are looked up together, step by step, and the processor fetches for all of them at once.
void DumpLoader::FindPeers(std::span<const CableEnd> ends, std::span<std::uint32_t> peers) {
  const bool isOrdered = 4 * std::exchange(wrongGuesses_, 0) < peers.size();
  for (const CableEnd& end : ends) {
    if (!isOrdered && !end.IsSettled()) builder_.ExpectNode(end.peerGuid);
  }
  for (std::size_t i = 0; i < ends.size(); ++i) {
    peers[i] = ends[i].IsSettled() ? GuidIndex::None : FindPeer(ends[i].peerGuid);
  }
  if (isOrdered) return;
  for (std::size_t i = 0; i < ends.size(); ++i) {
    if (peers[i] == GuidIndex::None) continue;
    const std::size_t guess = placed_[peers[i]].firstEnd + std::size_t{ends[i].peerPort} - 1;
    if (guess < ends_.size()) __builtin_prefetch(&ends_[guess]);
    builder_.ExpectLink(peers[i]);
  }
}

MaybeError DumpLoader::AddLinks() {
  builder_.ReserveLinks(ends_.size() / 2 + 1);
  std::array<std::uint32_t, 256> peers{};
  std::uint32_t node = 0;
  for (std::size_t first = 0; first < ends_.size(); first += peers.size()) {
    const std::size_t last = std::min(first + peers.size(), ends_.size());
    FindPeers(std::span(ends_).subspan(first, last - first), peers);
    for (std::size_t i = first; i < last; ++i) {
      while (i >= placed_[modelOrder_[node]].lastEnd) ++node;
      if (ends_[i].IsSettled()) continue;
      const PortPlace there{peers[i - first], ends_[i].peerPort};
      if (MaybeError error = AddLink({modelOrder_[node], ends_[i].port}, there, ends_[i])) {
        return error;
      }
    }
  }
  return std::nullopt;
}

MaybeError DumpLoader::AddLink(const PortPlace& here, const PortPlace& there, const CableEnd& end) {
  CableEnd* other = there.node != GuidIndex::None ? FindEnd(there) : nullptr;
  const bool agree =
      other != nullptr && other->peerGuid == placed_[here.node].guid && other->peerPort == here.num;
  if (!agree) return AddOddLink(here, there, end, other);
  const std::uint32_t speed = end.Speed() != 0 ? end.Speed() : other->Speed();
  if (!builder_.TryLink(here, there, speed, true)) return AddOddLink(here, there, end, other);
  other->Settle();
  return std::nullopt;
}

// A link whose two ends do not say the same, or that cannot be. `other` is what the
// far port's line says; it may be null.
MaybeError DumpLoader::AddOddLink(const PortPlace& here, const PortPlace& there,
                                  const CableEnd& end, const CableEnd* other) {
  if (there.node == GuidIndex::None) {
    if (leftOut_.contains(end.peerGuid)) return std::nullopt;
    Warn(WarningKind::PeerWithoutRecord, end.line, [&] {
      return "peer " + GuidText(end.peerGuid) + " has no record of its own, link left out";
    });
    return std::nullopt;
  }
  const std::uint64_t guid = placed_[here.node].guid;
  if (!builder_.HasPort(there)) {
    return ErrorAt(PeerPortPlace(end), "port number out of range: " + builder_.NoPortText(there));
  }
  if (here.node == there.node && here.num == there.num) {
    Warn(WarningKind::PortCabledToItself, end.line,
         [&] { return EndText(guid, here.num) + " is cabled to itself, link left out"; });
    return std::nullopt;
  }
  if (builder_.HasLink(here) || builder_.HasLink(there)) {
    Warn(WarningKind::EndsDisagree, end.line, [&] {
      return EndText(guid, here.num) + " names " + EndText(end.peerGuid, there.num) +
             ", but an earlier line linked one of them otherwise; link left out";
    });
    return std::nullopt;
  }
  Warn(WarningKind::EndsDisagree, end.line, [&] {
    return EndText(guid, here.num) + " names " + EndText(end.peerGuid, there.num) +
           ", which names " +
           (other != nullptr ? EndText(other->peerGuid, other->peerPort) : "nothing") +
           "; the link stands, not symmetric";
  });
  if (auto problem = builder_.AddLink(here, there, end.Speed(), false)) {
    return ErrorAt(PeerPortPlace(end), std::move(*problem));
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
