#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "fabric/ib_node.h"

namespace fabscope::internal {

// The plain lines of a topology dump, read fast.
//
// Of a large dump nearly every line is one of a few plain forms, and reading them is most of the
// time that a check takes. This reader knows only these forms, reads where the bytes lie, and gives
// up at the slightest oddity. What it gives up is looked at closely by topology_dump_lines.h, which
// knows all forms, tells good lines from bad ones, and says what is wrong and at which byte. So a
// line means the same whichever of the two reads it; tests and a fuzzer load dumps with and without
// this reader and compare all that comes of them.
//
//   vendid=0x2c9                                              a new record
//   sysimgguid=0x200000102000001                              its system
//   switchguid=0x200000102000001(200000102000001)             its node
//   Switch<tab>6 "S-0000000000200007"<tab><tab># "leaf-p3l1" base port 0 lid 12 lmc 0
//   [5]<tab>"S-000000000020000e"[2]<tab><tab># "mid-p3m0" lid 22 4xHDR
//   and blank lines
//
// Three things make it fast:
//
// - The first byte decides which form a line can have. No line is looked at twice.
// - The sixteen digits of a GUID are read in two words of eight bytes. The first is mostly the same
//   as in the line before and is then not read again.
// - What stands behind the lid (" 4xHDR") is the same on thousands of lines. It is parsed once, by
//   the close look, and from then on only compared (Learn). That also finds the end of the
//   description, which may hold quotes: the quote before " lid " is the last one of the line,
//   because none stands in the lid or behind it.
//
// It reads up to `Ahead` bytes from where a line begins, whether the line is that long or not. So
// it is only asked where these are there, and a line of which the end is not there is not plain.
class PlainDumpLines {
 public:
  // More than the longest form has up to its description.
  static constexpr std::ptrdiff_t Ahead = 128;

  enum class Kind { Odd, Ignored, VendorField, SystemGuid, NodeGuid, Node, Port };
  struct Line {
    const char* next = nullptr;        // behind its end
    std::uint64_t guid = 0;            // of a field its number, of a port that of the peer
    std::string_view name;             // of a node, as the host set it
    std::uint8_t type = 0;             // of a node
    std::uint32_t guidOffset = 0;      // in the line, of a node
    std::uint32_t peerPortOffset = 0;  // in the line
    std::uint8_t numPorts = 0;
    std::uint8_t port = 0;
    std::uint8_t peerPort = 0;
    std::uint8_t speedBit = 0;  // as it was learned
  };

  // Reads the line at `at`; `end` is where the bytes that are there end. Of an odd line nothing in
  // `line` counts.
  Kind Read(const char* at, const char* end, Line& line) {
    switch (*at) {
      case '[':
        return ReadPort(at, end, line) ? Kind::Port : Kind::Odd;
      case 'v':
        return ReadField(at, "vendid=0x", line) ? Kind::VendorField : Kind::Odd;
      case 'd':
        return ReadField(at, "devid=0x", line) ? Kind::VendorField : Kind::Odd;
      case 's':
        if (at[1] == 'y')
          return ReadField(at, "sysimgguid=0x", line) ? Kind::SystemGuid : Kind::Odd;
        return ReadField(at, "switchguid=0x", line) ? Kind::NodeGuid : Kind::Odd;
      case 'S':
        return ReadNode(at, end, "Switch\t", NodeTypeSwitch, line) ? Kind::Node : Kind::Odd;
      case 'C':
        return ReadNode(at, end, "Ca\t", NodeTypeCA, line) ? Kind::Node : Kind::Odd;
      case 'c':
        return ReadField(at, "caguid=0x", line) ? Kind::NodeGuid : Kind::Odd;
      case '\n':
        line.next = at + 1;
        return Kind::Ignored;
      default:
        return Kind::Odd;
    }
  }

  // A port line, without its end, that was looked at closely and had that speed. Its tail is that
  // of plain lines to come, if it is one that can be.
  void Learn(std::string_view text, std::uint8_t speedBit);

 private:
  struct Tail {
    std::array<char, 48> text{};
    std::ptrdiff_t size = 0;
    // Its last eight bytes, or all, as those of a word. One that was not learned ends nowhere.
    std::uint64_t end = 1;
    std::uint64_t mask = 0;
    std::uint8_t speedBit = 0;
  };

  // Inline, so that the compiler knows the keyword and compares it in a step or two.
  static bool ReadField(const char* at, std::string_view keyword, Line& line) {
    return std::memcmp(at, keyword.data(), keyword.size()) == 0 &&
           ReadFieldNumber(at + keyword.size(), line);
  }
  static bool ReadFieldNumber(const char* at, Line& line);
  bool ReadNodeId(const char* at, std::uint64_t& guid);
  bool ReadNode(const char* at, const char* end, std::string_view keyword, std::uint8_t type,
                Line& line);
  bool ReadPort(const char* at, const char* end, Line& line);
  const Tail* FindTail(const char* begin, const char* end);

  // The first half of the GUID that was read last: most are of one maker.
  struct {
    std::uint64_t text = 0x3030303030303030U;  // "00000000"
    std::uint64_t guid = 0;
  } high_;
  // Ends of several speeds mix in one dump.
  std::array<Tail, 4> tails_;
  std::size_t next_ = 0;    // the one to forget next
  std::size_t likely_ = 0;  // the one that was met last
};

}  // namespace fabscope::internal
