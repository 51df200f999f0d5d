#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace fabscope::internal {

// What is wrong with a line of a known kind, and at which byte of the text.
struct LineProblem {
  std::size_t offset;
  const char* message;
};
using MaybeProblem = std::optional<LineProblem>;

enum class DumpLineKind {
  Ignored,      // blank lines, comments, chassis lines
  VendorField,  // vendid=, devid=
  SystemGuid,   // sysimgguid=
  NodeGuid,     // switchguid=, caguid=, rtguid=
  Node,         // Switch, Ca, Rt
  UnknownNode,  // a node of any other type
  Port,         // [1] "S-..."[2] ...
  Unknown,
};

DumpLineKind KindOfDumpLine(std::string_view line);

// vendid=0x2c9, sysimgguid=0x200007, switchguid=0x200007(200007): the number.
MaybeProblem ParseFieldLine(std::string_view line, std::size_t offset, std::uint64_t& value);

// Switch	6 "S-0000000000200007"		# "leaf-p3l1" base port 0 lid 12 lmc 0
struct DumpNodeLine {
  std::uint8_t type = 0;
  std::uint8_t numPorts = 0;
  std::uint64_t guid = 0;
  std::size_t guidOffset = 0;
  std::string_view name;  // as the host set it
};
MaybeProblem ParseNodeLine(std::string_view line, std::size_t offset, DumpNodeLine& node);

// [5]	"S-000000000020000e"[2]		# "mid-p3m0" lid 22 4xHDR
struct DumpPortLine {
  std::uint8_t port = 0;
  std::size_t portOffset = 0;
  std::uint64_t peerGuid = 0;
  std::uint8_t peerPort = 0;
  std::size_t peerPortOffset = 0;
  std::string_view speed;  // the text behind the width; empty when the line has none
};
MaybeProblem ParsePortLine(std::string_view line, std::size_t offset, DumpPortLine& port);

// Whether a last line that has no line end was cut off: a dump never ends inside a record's head,
// and its port lines end in width and speed.
bool IsCutLine(std::string_view line);

}  // namespace fabscope::internal
