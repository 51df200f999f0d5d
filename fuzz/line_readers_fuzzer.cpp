// What reads single lines, words and characters, without any fabric around: many more executions
// than whole files get. Plain lines of dumps say the same whether they are read fast or closely,
// blanks in front change nothing, places are in the line, and numbers, characters and lines of side
// files are what a second, plain reader takes them for.

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <optional>
#include <simdjson.h>
#include <string>
#include <string_view>

#include "formats/lines.h"
#include "formats/link_speeds.h"
#include "formats/plain_dump_lines.h"
#include "formats/read_side_files.h"
#include "formats/topology_dump_lines.h"
#include "fuzz/plain_text.h"
#include "fuzz/require.h"
#include "text/text_fields.h"
#include "text/utf8.h"

namespace {

using namespace fabscope::internal;
using namespace fabscope::internal::fuzz;

// --- Lines of dumps.

constexpr std::size_t lineOffset = 7;

// What comes of a line, and its own text, which offsets count from.
template <typename Parsed>
struct Reading {
  std::string_view line;
  std::size_t offset;
  Parsed parsed{};
  MaybeProblem problem{};

  template <typename Parse>
  Reading(std::string_view text, std::size_t at, Parse parse) : line(text), offset(at) {
    problem = parse(line, offset, parsed);
    Require(!problem || IsPlace(problem->offset), "a problem is in its line");
  }

  bool IsPlace(std::size_t place) const { return place >= offset && place <= offset + line.size(); }
  std::string_view From(std::size_t place) const {
    Require(IsPlace(place), "a place is in its line");
    return line.substr(place - offset);
  }
};

template <typename Parsed>
bool HaveSameProblem(const Reading<Parsed>& a, const Reading<Parsed>& b) {
  if (!a.problem || !b.problem) return !a.problem && !b.problem;
  return a.problem->offset == b.problem->offset &&
         std::string_view(a.problem->message) == b.problem->message;
}

bool IsSamePort(const DumpPortLine& a, const DumpPortLine& b) {
  return a.port == b.port && a.portOffset == b.portOffset && a.peerGuid == b.peerGuid &&
         a.peerPort == b.peerPort && a.peerPortOffset == b.peerPortOffset && a.speed == b.speed;
}

// The decimal number at the beginning of a text.
unsigned NumberAt(std::string_view text) {
  unsigned number = 0;
  for (; !text.empty() && text[0] >= '0' && text[0] <= '9' && number < 1000;
       text.remove_prefix(1)) {
    number = number * 10 + static_cast<unsigned>(text[0] - '0');
  }
  return number;
}

// A whole line that lost its end somewhere is told, unless a name has the words that end one.
void RequireCutTold(std::string_view line, const DumpPortLine& port) {
  if (!SpeedCode(port.speed) || line.find("lid") != line.rfind("lid")) return;
  std::size_t place = 0;
  for (const char c : line) place = place * 31 + static_cast<unsigned char>(c);
  const std::string_view cut = line.substr(0, 1 + place % (line.size() - 1));
  DumpPortLine left;
  const bool isWhole = !ParsePortLine(cut, 0, left) && SpeedCode(left.speed);
  Require(isWhole || IsCutLine(cut), "a port line that was cut is known by its end");
}

// A line that is read fast says what it says when looked at closely. What ends a line of a known
// speed is learned of the line itself. Answers whether it is such a port line.
bool LookAtPlainLine(std::string_view line, const Reading<DumpPortLine>& closely) {
  const auto code = closely.problem ? std::nullopt : SpeedCode(closely.parsed.speed);
  if (line.find('\n') != std::string_view::npos || line.ends_with('\r')) return false;
  PlainDumpLines lines;
  if (code) lines.Learn(line, static_cast<std::uint8_t>(std::countr_zero(*code)));
  std::string text(line);
  text.append("\n").append(PlainDumpLines::Ahead, '0');
  PlainDumpLines::Line plain;
  const PlainDumpLines::Kind kind = lines.Read(text.data(), text.data() + text.size(), plain);
  if (kind == PlainDumpLines::Kind::Odd) return false;
  Require(plain.next == text.data() + line.size() + 1, "a plain line ends at its end");
  switch (KindOfDumpLine(line)) {
    case DumpLineKind::Ignored:
      Require(kind == PlainDumpLines::Kind::Ignored, "a plain line has its kind");
      return false;
    case DumpLineKind::VendorField:
    case DumpLineKind::SystemGuid:
    case DumpLineKind::NodeGuid: {
      std::uint64_t value = 0;
      Require(!ParseFieldLine(line, 0, value) && value == plain.guid,
              "a plain field is read alike");
      return false;
    }
    case DumpLineKind::Node: {
      DumpNodeLine node;
      Require(!ParseNodeLine(line, 0, node) && kind == PlainDumpLines::Kind::Node &&
                  node.type == plain.type && node.numPorts == plain.numPorts &&
                  node.guid == plain.guid && node.guidOffset == plain.guidOffset &&
                  node.name == plain.name,
              "a plain node is read alike");
      return false;
    }
    default: {
      const DumpPortLine& port = closely.parsed;
      Require(kind == PlainDumpLines::Kind::Port && code, "a plain line has its kind and speed");
      Require(plain.port == port.port && plain.guid == port.peerGuid &&
                  plain.peerPort == port.peerPort &&
                  plain.peerPortOffset + lineOffset == port.peerPortOffset &&
                  *code == std::uint32_t{1} << plain.speedBit,
              "a plain port line is read alike");
      return true;
    }
  }
}

void LookAtPort(std::string_view line, std::string_view blanked) {
  const Reading<DumpPortLine> whole(line, lineOffset, ParsePortLine);
  const Reading<DumpPortLine> behindBlank(blanked, lineOffset - 1, ParsePortLine);
  const bool isPlain = LookAtPlainLine(line, whole);
  Require(HaveSameProblem(whole, behindBlank), "a blank before a port line changes no problem");
  if (whole.problem) return;
  const DumpPortLine& port = whole.parsed;
  Require(IsSamePort(port, behindBlank.parsed), "a blank before a port line changes nothing");
  Require(port.port != 0 && NumberAt(whole.From(port.portOffset)) == port.port,
          "a port has the number that stands there");
  Require(port.peerPort != 0 && NumberAt(whole.From(port.peerPortOffset)) == port.peerPort,
          "a peer's port has the number that stands there");
  Require(line.find(port.speed) != std::string_view::npos, "a speed is a part of the line");
  if (isPlain) RequireCutTold(line, port);
}

void LookAtNode(std::string_view line, std::string_view blanked, DumpLineKind kind) {
  const Reading<DumpNodeLine> whole(line, lineOffset, ParseNodeLine);
  const Reading<DumpNodeLine> other(blanked, lineOffset - 1, ParseNodeLine);
  Require(HaveSameProblem(whole, other), "a blank before a node changes no problem");
  if (whole.problem) return;
  const DumpNodeLine& a = whole.parsed;
  const DumpNodeLine& b = other.parsed;
  Require(a.type == b.type && a.numPorts == b.numPorts && a.guid == b.guid &&
              a.guidOffset == b.guidOffset && a.name == b.name,
          "a blank before a node changes nothing");
  Require(kind != DumpLineKind::Node || a.type != 0, "a node of a known kind has a type");
  const std::string_view digits = whole.From(a.guidOffset);
  Require(ParseHex(digits.substr(0, digits.find('"'))) == a.guid,
          "a node has the GUID that stands there");
  Require(line.find(a.name) != std::string_view::npos, "a name is a part of the line");
}

void LookAtField(std::string_view line, std::string_view blanked) {
  const Reading<std::uint64_t> whole(line, lineOffset, ParseFieldLine);
  const Reading<std::uint64_t> other(blanked, lineOffset - 1, ParseFieldLine);
  Require(HaveSameProblem(whole, other) && whole.parsed == other.parsed,
          "a blank before a field changes nothing");
}

void LookAtDumpLine(std::string_view line, std::string_view blanked) {
  const DumpLineKind kind = KindOfDumpLine(line);
  Require(KindOfDumpLine(blanked) == kind, "a blank changes no line's kind");
  Require(IsCutLine(blanked) == IsCutLine(line), "a blank cuts no line");
  LookAtPort(line, blanked);
  LookAtNode(line, blanked, kind);
  if (line.find('=') != std::string_view::npos) LookAtField(line, blanked);
}

// --- Characters.

std::size_t PlainFirstInvalid(std::string_view text) {
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::size_t at = text.size() - rest.size();
    if (!TakeCharacter(rest)) return at;
  }
  return text.size();
}

void LookAtCharacters(std::string_view text) {
  const std::size_t valid = FirstInvalidUtf8(text);
  Require(valid == PlainFirstInvalid(text), "UTF-8 ends where a plain reader finds its end");
  Require(simdjson::validate_utf8(text.data(), text.size()) == (valid == text.size()),
          "UTF-8 is what others take for it");
  const std::string clean = CleanText(text);
  Require(!HasControls(clean), "a clean text has no controls");
  Require(CleanText(clean) == clean, "a clean text stays as it is");
  Require((clean == text) != HasControls(text), "a text changes where it has controls");
  const std::string shown = TextForPeople(text);
  Require(!HasBidirectionalControls(shown), "what people see has its order");
  Require((shown == text) != HasBidirectionalControls(text), "other texts people see as they are");
}

// A text again and again, until it is as long that it must be cut.
void LookAtCut(std::string_view text) {
  constexpr std::size_t most = MostTextBytes;
  std::string cut;
  while (cut.size() <= most + 3) cut += text;
  const std::string whole = cut;
  Require(CutText(cut), "a long text is cut");
  Require(cut.size() <= most && cut.size() + 3 >= most && whole.starts_with(cut),
          "the beginning of a long text is left");
  std::string_view rest = std::string_view(whole).substr(cut.size());
  Require(PlainFirstInvalid(whole) < most || TakeCharacter(rest).has_value(),
          "no character is cut");
  Require(!CutText(cut), "a text is cut once");
}

// --- Numbers.

std::optional<std::uint64_t> PlainNumber(std::string_view digits, unsigned base,
                                         std::uint64_t limit) {
  constexpr std::string_view all = "0123456789abcdef0123456789ABCDEF";
  if (digits.empty()) return std::nullopt;
  unsigned __int128 value = 0;
  for (const char c : digits) {
    const std::size_t digit = all.find(c);
    if (digit == std::string_view::npos || digit % 16 >= base) return std::nullopt;
    value = value * base + digit % 16;
    if (value > limit) return std::nullopt;
  }
  return static_cast<std::uint64_t>(value);
}

void LookAtNumbers(std::string_view word) {
  constexpr std::uint64_t largest = ~std::uint64_t{0};
  for (const std::uint64_t limit : {std::uint64_t{255}, std::uint64_t{65535}, largest}) {
    Require(ParseNumber(word, limit) == PlainNumber(word, 10, limit), "a number is what it says");
  }
  const auto hex = word.size() <= 16 ? PlainNumber(word, 16, largest) : std::nullopt;
  Require(ParseHex(word) == hex, "a hexadecimal number is what it says");
  Require(!ParseGuid(word), "a GUID has its mark in front");
}

void LookAtWords(std::string_view text) {
  std::string_view word = text.substr(0, text.find_first_of(" \t\r,\n"));
  if (!word.starts_with("0x")) return LookAtNumbers(word);
  word.remove_prefix(2);
  Require(ParseGuid(text.substr(0, word.size() + 2)) == ParseHex(word), "a GUID is its digits");
  if (!word.starts_with("0x")) LookAtNumbers(word);
}

// --- Lines.

std::string_view PlainTrimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// Calls take(line) for all that stands between line ends; false ends it.
template <typename Take>
void ForEachPlainLine(std::string_view text, Take take) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (!take(line)) return;
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
}

void LookAtLines(std::string_view text) {
  Input input("fuzz", std::string(text));
  LineReader lines(input);
  Line line;
  std::size_t number = 0;
  const bool hasMark = text.starts_with("\xef\xbb\xbf");
  ForEachPlainLine(text.substr(hasMark ? 3 : 0), [&](std::string_view expected) {
    Require(lines.Next(line) && line.text == expected, "lines are what stands between their ends");
    Require(line.number == ++number, "lines count from 1");
    Require(line.offset == (hasMark && number == 1 ? 3U : 0U), "a mark is no part of a line");
    return true;
  });
  Require(number == 0 || line.hasEnd == text.ends_with('\n'),
          "only the last line may lack its end");
  Require(!lines.Next(line) && !lines.Finish(std::nullopt), "nothing is left behind the last line");
}

// --- Side files.

std::optional<std::uint64_t> PlainGuid(std::string_view text) {
  if (!text.starts_with("0x") || text.size() > 18) return std::nullopt;
  return PlainNumber(text.substr(2), 16, ~std::uint64_t{0});
}

bool IsIgnored(std::string_view line) {
  return PlainTrimmed(line).empty() || PlainTrimmed(line)[0] == '#';
}

// 0x2c903,1
bool IsGoodNumber(std::string_view line, bool isGuidFirst, std::uint64_t limit) {
  const std::size_t comma = line.find(',');
  if (comma == std::string_view::npos || line.find(',', comma + 1) != std::string_view::npos) {
    return false;
  }
  const std::string_view left = PlainTrimmed(line.substr(0, comma));
  const std::string_view right = PlainTrimmed(line.substr(comma + 1));
  return PlainGuid(isGuidFirst ? left : right) &&
         PlainNumber(isGuidFirst ? right : left, 10, limit);
}

// 0x2c903 "leaf" # comment
bool IsGoodName(std::string_view line) {
  line = PlainTrimmed(line);
  const std::size_t blank = line.find_first_of(" \t\r");
  if (blank == std::string_view::npos || !PlainGuid(line.substr(0, blank))) return false;
  line = PlainTrimmed(line.substr(blank));
  const std::size_t close = line.find('"', 1);
  if (line[0] != '"' || close == std::string_view::npos) return false;
  const std::string_view behind = PlainTrimmed(line.substr(close + 1));
  return behind.empty() || behind[0] == '#';
}

// Reads a file of that text behind a header that takes a line, or none.
template <typename Read, typename IsGood>
void RequireFirstBadLine(std::string_view header, std::string_view text, Read read, IsGood isGood) {
  Input input("fuzz", std::string(header).append(text));
  const MaybeError error = read(input);
  std::size_t number = header.empty() ? 0 : 1;
  bool isBad = false;
  std::string_view bad;
  ForEachPlainLine(text, [&](std::string_view line) {
    ++number;
    isBad = !IsIgnored(line) && !isGood(line);
    bad = line;
    return !isBad;
  });
  Require(error.has_value() == isBad, "a side file is read if all its lines are good");
  if (!error) return;
  Require(error->line == number, "an error of a side file is in the first bad line");
  Require(error->column >= 1 && error->column <= bad.size() + 1,
          "an error of a side file is in its line");
}

FabricBuilder SmallFabric() {
  FabricBuilder builder;
  for (const unsigned guid : {1U, 2U, 0x2c903U}) {
    NodeSpec node;
    node.guid = guid;
    node.type = guid == 2 ? NodeTypeCA : NodeTypeSwitch;
    Require(!builder.AddNode(node), "the fabric is a good one");
  }
  return builder;
}

// A byte order mark has its meaning in front of a file alone.
void LookAtSideFiles(std::string_view text) {
  if (text.starts_with("\xef\xbb\xbf")) return;
  static FabricBuilder builder = SmallFabric();
  const auto ranks = [](Input& input) {
    Warnings warnings;
    return ReadRanks(input, builder, warnings);
  };
  RequireFirstBadLine("guid,rank\n", text, ranks,
                      [](std::string_view line) { return IsGoodNumber(line, true, 255); });
  RequireFirstBadLine("rank , guid\r\n", text, ranks,
                      [](std::string_view line) { return IsGoodNumber(line, false, 255); });
  const auto names = [](Input& input) {
    Warnings warnings;
    NodeNameMap map;
    return ReadNodeNameMap(input, map, warnings);
  };
  RequireFirstBadLine({}, text, names, IsGoodName);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  std::string blanked(1, ' ');
  blanked.append(reinterpret_cast<const char*>(data), size);
  const std::string_view text = std::string_view(blanked).substr(1);
  const std::size_t end = std::min(text.find('\n'), size);
  LookAtDumpLine(text.substr(0, end), std::string_view(blanked).substr(0, end + 1));
  LookAtCharacters(text);
  LookAtCut(text);
  LookAtWords(text);
  LookAtLines(text);
  LookAtSideFiles(text);
  return 0;
}
