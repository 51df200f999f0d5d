// The lines of an `ibnetdiscover` topology dump, one by one.
//
// Node descriptions are not escaped: a host may put quotes, "#" and anything else into its own. So
// a description reaches from the first quote behind the "#" to the last quote of the line; what the
// tool prints behind it (lid, width and speed, ...) never holds one.

#include "formats/topology_dump_lines.h"

#include <algorithm>
#include <array>

#include "fabric/ib_node.h"
#include "formats/link_speeds.h"
#include "formats/node_kinds.h"
#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

struct Keyword {
  std::string_view text;
  DumpLineKind kind;
};

constexpr std::array<Keyword, 6> fieldKeywords{{{"vendid=", DumpLineKind::VendorField},
                                                {"devid=", DumpLineKind::VendorField},
                                                {"sysimgguid=", DumpLineKind::SystemGuid},
                                                {"switchguid=", DumpLineKind::NodeGuid},
                                                {"caguid=", DumpLineKind::NodeGuid},
                                                {"rtguid=", DumpLineKind::NodeGuid}}};

// What the tool prints for a speed that it does not know.
constexpr std::string_view unknownSpeed = "???";

constexpr const char* notAGuid = "not a GUID, expected 1 to 16 hexadecimal digits";

// <word> <digits> "
bool LooksLikeNode(std::string_view line) {
  LineCursor cursor(line, 0);
  cursor.TakeWord();
  cursor.SkipBlanks();
  if (cursor.TakeWhile(IsDigit).empty()) return false;
  cursor.SkipBlanks();
  return cursor.Peek() == '"';
}

MaybeProblem TakePortNumber(LineCursor& cursor, std::uint8_t& port) {
  const std::size_t offset = cursor.Offset();
  const auto number = ParseNumber(cursor.TakeWhile(IsDigit), 255);
  if (!number || *number == 0) {
    return LineProblem{offset, "port number out of range, expected 1 to 255"};
  }
  port = static_cast<std::uint8_t>(*number);
  if (!cursor.Take(']')) return LineProblem{cursor.Offset(), "expected \"]\" behind the port"};
  return std::nullopt;
}

// The GUID of a port, "(2c903)", which must be readable but does not count.
MaybeProblem TakePortGuid(LineCursor& cursor) {
  if (!cursor.Take('(')) return std::nullopt;
  const std::size_t offset = cursor.Offset();
  if (!ParseHex(cursor.TakeWhile([](char c) { return c != ')'; })) || !cursor.Take(')')) {
    return LineProblem{offset, notAGuid};
  }
  return std::nullopt;
}

// What may follow a port number: an external port mark, "[ext 5]", and the port's GUID.
MaybeProblem TakePortMarks(LineCursor& cursor) {
  if (cursor.Take("[ext")) {
    cursor.TakeWhile([](char c) { return c != ']'; });
    cursor.Take(']');
  }
  return TakePortGuid(cursor);
}

// "S-0002c9020040f160": a type character and the node GUID.
MaybeProblem TakeNodeId(LineCursor& cursor, std::uint64_t& guid, std::size_t& guidOffset) {
  const std::size_t offset = cursor.Offset();
  const bool opened = cursor.Take('"');
  const std::string_view id = cursor.TakeWhile([](char c) { return c != '"'; });
  if (!opened || !cursor.Take('"')) {
    return LineProblem{offset, "expected a node in double quotes, as \"S-0002c90200400001\""};
  }
  guidOffset = offset + 1 + std::min<std::size_t>(2, id.size());
  const auto parsed =
      id.size() > 2 && id[1] == '-' ? ParseHex(id.substr(2)) : std::optional<std::uint64_t>();
  if (!parsed) return LineProblem{guidOffset, notAGuid};
  guid = *parsed;
  return std::nullopt;
}

// What stands behind the last quote of the comment: ` lid 22 4xHDR s=1 ...`
std::string_view BehindDescription(std::string_view comment) {
  const std::size_t quote = comment.rfind('"');
  return quote == std::string_view::npos ? comment : comment.substr(quote + 1);
}

// The word that gives width and speed, or nothing. A lid may be blank or negative.
std::string_view WidthAndSpeed(std::string_view comment) {
  LineCursor cursor(BehindDescription(comment), 0);
  cursor.SkipBlanks();
  if (!cursor.Take("lid")) return {};
  cursor.SkipBlanks();
  std::string_view word = cursor.TakeWord();
  const std::string_view digits = word.starts_with('-') ? word.substr(1) : word;
  if (ParseNumber(digits, ~std::uint64_t{0})) {
    cursor.SkipBlanks();
    word = cursor.TakeWord();
  }
  const bool isOther =
      word.starts_with('(') || word == "slot" || word.find('=') != std::string_view::npos;
  return isOther ? std::string_view() : word;
}

// "4xHDR" -> "HDR"; either part may be missing.
std::string_view SpeedText(std::string_view widthAndSpeed) {
  if (widthAndSpeed == unknownSpeed) return widthAndSpeed;
  LineCursor cursor(widthAndSpeed, 0);
  if (cursor.Take("??")) return cursor.Rest();
  if (!cursor.TakeWhile(IsDigit).empty() && cursor.Take('x')) return cursor.Rest();
  return widthAndSpeed;
}

// No speed, a width, or the beginning of a known speed. What is neither is some new hardware's.
bool IsCutSpeed(std::string_view speed) {
  if (speed == unknownSpeed || SpeedCode(speed)) return false;
  const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
  return IsPrefixOfSpeed(speed) || std::none_of(speed.begin(), speed.end(), isLetter);
}

}  // namespace

DumpLineKind KindOfDumpLine(std::string_view line) {
  line = Trimmed(line);
  if (line.empty() || line.front() == '#') return DumpLineKind::Ignored;
  if (line.front() == '[') {
    // A shell prompt may begin with a bracket as well.
    return line.size() > 1 && IsDigit(line[1]) ? DumpLineKind::Port : DumpLineKind::Unknown;
  }
  const auto startsWith = [line](std::string_view text) {
    return line.front() == text.front() && line.starts_with(text);
  };
  for (const Keyword& keyword : fieldKeywords) {
    if (startsWith(keyword.text)) return keyword.kind;
  }
  for (const NodeKind& kind : nodeKinds) {
    if (startsWith(kind.word) && line.size() > kind.word.size() &&
        IsBlank(line[kind.word.size()])) {
      return DumpLineKind::Node;
    }
  }
  if (line.starts_with("Chassis ") || line.starts_with("Non-Chassis Nodes")) {
    return DumpLineKind::Ignored;
  }
  return LooksLikeNode(line) ? DumpLineKind::UnknownNode : DumpLineKind::Unknown;
}

MaybeProblem ParseFieldLine(std::string_view line, std::size_t offset, std::uint64_t& value) {
  const std::size_t numberAt = line.find('=') + 1;
  LineCursor cursor(line.substr(numberAt), offset + numberAt);
  const std::size_t numberOffset = cursor.Offset();
  cursor.Take("0x");
  const auto number = ParseHex(cursor.TakeWhile([](char c) { return HexDigit(c) >= 0; }));
  if (!number || !(cursor.AtEnd() || IsBlank(cursor.Peek()) || cursor.Peek() == '(')) {
    return LineProblem{numberOffset, "expected 0x and 1 to 16 hexadecimal digits"};
  }
  value = *number;
  return TakePortGuid(cursor);
}

MaybeProblem ParseNodeLine(std::string_view line, std::size_t offset, DumpNodeLine& node) {
  LineCursor cursor(line, offset);
  cursor.SkipBlanks();
  const std::string_view word = cursor.TakeWord();
  for (const NodeKind& kind : nodeKinds) {
    if (kind.word == word) node.type = kind.type;
  }
  cursor.SkipBlanks();
  const std::size_t countOffset = cursor.Offset();
  const auto count = ParseNumber(cursor.TakeWord(), 255);
  if (!count) {
    return LineProblem{countOffset, "not a number of ports, expected 0 to 255"};
  }
  node.numPorts = static_cast<std::uint8_t>(*count);
  cursor.SkipBlanks();
  if (MaybeProblem problem = TakeNodeId(cursor, node.guid, node.guidOffset)) return problem;

  cursor.SkipBlanks();
  const std::size_t commentOffset = cursor.Offset();
  const std::string_view comment = cursor.Rest();
  const std::size_t open = comment.find('"');
  const std::size_t close = comment.rfind('"');
  if (!comment.starts_with('#') || open == close) {
    return LineProblem{commentOffset, "expected # and the node's description in double quotes"};
  }
  node.name = comment.substr(open + 1, close - open - 1);
  return std::nullopt;
}

MaybeProblem ParsePortLine(std::string_view line, std::size_t offset, DumpPortLine& port) {
  LineCursor cursor(line, offset);
  cursor.SkipBlanks();
  cursor.Take('[');
  port.portOffset = cursor.Offset();
  if (MaybeProblem problem = TakePortNumber(cursor, port.port)) return problem;
  if (MaybeProblem problem = TakePortMarks(cursor)) return problem;
  cursor.SkipBlanks();

  std::size_t guidOffset = 0;
  if (MaybeProblem problem = TakeNodeId(cursor, port.peerGuid, guidOffset)) return problem;
  if (!cursor.Take('[')) {
    return LineProblem{cursor.Offset(), "expected the peer's port in brackets"};
  }
  port.peerPortOffset = cursor.Offset();
  if (MaybeProblem problem = TakePortNumber(cursor, port.peerPort)) return problem;
  if (MaybeProblem problem = TakePortMarks(cursor)) return problem;
  cursor.SkipBlanks();
  port.speed = cursor.Peek() == '#' ? SpeedText(WidthAndSpeed(cursor.Rest())) : std::string_view();
  return std::nullopt;
}

bool IsCutLine(std::string_view line) {
  line = Trimmed(line);
  switch (KindOfDumpLine(line)) {
    case DumpLineKind::VendorField:
    case DumpLineKind::SystemGuid:
    case DumpLineKind::NodeGuid:
      return true;
    case DumpLineKind::Node: {
      // The node and its description, both in quotes; of a switch always the lmc behind them.
      if (std::count(line.begin(), line.end(), '"') < 4) return true;
      return line.starts_with("Switch") &&
             line.find(" lmc ", line.rfind('"')) == std::string_view::npos;
    }
    case DumpLineKind::Port: {
      const std::size_t hash = line.find('#');
      if (hash == std::string_view::npos) return true;
      return IsCutSpeed(SpeedText(WidthAndSpeed(line.substr(hash))));
    }
    case DumpLineKind::Unknown:
      for (const Keyword& keyword : fieldKeywords) {
        if (keyword.text.starts_with(line)) return true;
      }
      for (const NodeKind& kind : nodeKinds) {
        if (kind.word.starts_with(line)) return true;
      }
      return line == "[";
    case DumpLineKind::Ignored:
    case DumpLineKind::UnknownNode:
      break;
  }
  return false;
}

}  // namespace fabscope::internal
