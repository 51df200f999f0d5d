// The whole check over what was a fat tree once, with every option that a user has, down to the
// reports. However the same fabric is told - again, its lines in another order, ranks, FLIDs and
// names in files of their own, as a document or as a dump - the reports are the same to the byte.

#include <algorithm>
#include <array>
#include <random>
#include <sstream>

#include "check/check.h"
#include "fabric/guid.h"
#include "formats/fabric_document.h"
#include "formats/topology_dump_writer.h"
#include "fuzz/fabric_parts.h"
#include "fuzz/files.h"
#include "fuzz/reports.h"
#include "fuzz/require.h"

namespace {

using namespace fabscope::internal;
using namespace fabscope::internal::fuzz;

// Names as switches bear them, some of them more than once.
std::string Name(FuzzedDataProvider& bytes) {
  static const std::vector<std::string> starts{"spine", "leaf-", "mid", "rack 7/leaf0",
                                               "n\xc3\xb6"};
  static const std::vector<std::string> ends{"", "/U1", "/A2", "\"", " Aggregation Node", ","};
  const std::size_t start = bytes.ConsumeIntegralInRange<std::size_t>(0, starts.size() - 1);
  const auto number = bytes.ConsumeIntegralInRange(0, 40);
  const std::size_t end = bytes.ConsumeIntegralInRange<std::size_t>(0, 2 * ends.size());
  return starts[start] + std::to_string(number) + (end < ends.size() ? ends[end] : std::string());
}

CheckOptions Options(FuzzedDataProvider& bytes) {
  static const std::vector<const char*> expressions{"^spine", "1$", "^(mid|spine)", "", "nothing"};
  CheckOptions options;
  options.roots = static_cast<RootsFrom>(bytes.ConsumeIntegralInRange(0, 4));
  const std::size_t expression =
      bytes.ConsumeIntegralInRange<std::size_t>(0, expressions.size() - 1);
  if (options.roots == RootsFrom::Regex) {
    options.rootRegex = std::make_shared<regExp>(expressions[expression]);
  }
  options.specialNodes = std::make_shared<regExp>("Aggregation Node");
  options.retries = bytes.ConsumeIntegralInRange(0, 12);
  options.equalClassifications = bytes.ConsumeIntegralInRange(1, 4);
  options.mergePercent = bytes.ConsumeIntegralInRange(0, 100);
  options.showGuid = bytes.ConsumeIntegralInRange(0, 2);
  options.wantDump = bytes.ConsumeBool();
  return options;
}

struct Files {
  std::string fabric;
  std::optional<std::string> ranks;
  std::optional<std::string> flids;
  std::optional<std::string> names;
};

CheckResult Check(CheckOptions options, const Files& files) {
  static const MemoryFile fabric;
  static const MemoryFile ranks;
  static const MemoryFile flids;
  static const MemoryFile names;
  fabric.Write(files.fabric);
  options.fabric = fabric.Path();
  const auto give = [](const std::optional<std::string>& text, const MemoryFile& file,
                       std::string& option) {
    if (!text) return;
    file.Write(*text);
    option = file.Path();
  };
  give(files.ranks, ranks, options.ranks);
  give(files.flids, flids, options.flids);
  give(files.names, names, options.nodeNameMap);
  return RunCheck(options);
}

std::string DocumentOf(const FabricParts& parts) { return FabricDocumentText(*BuildFabric(parts)); }

std::string DumpOf(const IBFabric& fabric) {
  std::ostringstream stream;
  WriteTopologyDump(fabric, stream);
  return stream.str();
}

// Links, aggregated ports and attributes of ports in another order, and links from their other end.
FabricParts Shuffled(FabricParts parts, std::uint32_t seed) {
  std::minstd_rand random(seed);
  std::shuffle(parts.links.begin(), parts.links.end(), random);
  for (LinkSpec& link : parts.links) {
    if (random() % 2 == 0) std::swap(link.a, link.b);
  }
  std::shuffle(parts.ports.begin(), parts.ports.end(), random);
  for (auto& aport : parts.aports) std::shuffle(aport.ports.begin(), aport.ports.end(), random);
  return parts;
}

// A document has a line for each link and each aggregated port.
std::string WithLinesShuffled(const std::string& document, std::uint32_t seed) {
  std::minstd_rand random(seed);
  std::string shuffled;
  std::istringstream stream(document);
  std::vector<std::string> lines;
  bool isNodes = true;
  for (std::string line; std::getline(stream, line);) {
    const bool isItem = line.starts_with("{\"a\"") || line.starts_with("{\"ports\"");
    if (!isItem || isNodes) {
      shuffled += line + "\n";
      isNodes = isNodes && !line.starts_with("\"links\"");
      continue;
    }
    // Behind the last one the list is closed.
    const bool isLast = !line.ends_with("},");
    const std::size_t end = line.size() - (isLast ? 2 : 1);
    lines.push_back(line.substr(0, end));
    if (!isLast) continue;
    std::shuffle(lines.begin(), lines.end(), random);
    for (std::size_t i = 0; i < lines.size(); ++i) {
      shuffled += lines[i] + (i + 1 < lines.size() ? ",\n" : line.substr(end) + "\n");
    }
    lines.clear();
  }
  return shuffled;
}

// The records of a dump, each of which stands behind an empty line.
std::string WithRecordsShuffled(const std::string& dump, std::uint32_t seed) {
  std::minstd_rand random(seed);
  std::vector<std::string> records;
  std::size_t at = dump.find("\n\n");
  std::string shuffled = dump.substr(0, at);
  while (at != std::string::npos) {
    const std::size_t next = dump.find("\n\n", at + 2);
    records.push_back(dump.substr(at, next - at));
    if (next == std::string::npos) records.back().pop_back();
    at = next;
  }
  std::shuffle(records.begin(), records.end(), random);
  for (const std::string& record : records) shuffled += record;
  return shuffled + "\n";
}

struct Case {
  CheckOptions options;
  FabricParts parts;
  std::uint32_t seed = 0;  // for what is shuffled
};

std::string Look(const CheckOptions& options, const Files& files) {
  const CheckResult result = Check(options, files);
  RequireSoundReports(result);
  return ReportsOf(result);
}

void RequireSameReports(const Case& what, const Files& one, const Files& other,
                        const char* promise) {
  RequireSame(Look(what.options, one), Look(what.options, other), promise);
}

void CheckTwice(Case what) {
  const Files files{DocumentOf(what.parts), {}, {}, {}};
  RequireSameReports(what, files, files, "a check done twice gives the same");
}

void CheckInOtherOrder(Case what) {
  const std::string document = DocumentOf(what.parts);
  RequireSame(DocumentOf(Shuffled(what.parts, what.seed)), document,
              "a fabric does not depend on the order of its making");
  RequireSameReports(what, {document, {}, {}, {}},
                     {WithLinesShuffled(document, what.seed), {}, {}, {}},
                     "the order of links and aggregated ports does not matter");
}

// Of others than switches side files say nothing, and nobody looks at what a document says.
void CheckWithSideFiles(Case what) {
  const std::string document = DocumentOf(what.parts);
  std::string ranks = "guid,rank\n";
  std::string flids = "flid,guid\n";
  for (NodeSpec& node : what.parts.nodes) {
    if (node.type != NodeTypeSwitch) continue;
    ranks += GuidText(node.guid) + "," + std::to_string(node.smdbRank) + "\n";
    for (const std::uint16_t flid : node.flids) {
      flids += std::to_string(flid) + "," + GuidText(node.guid) + "\n";
    }
    node.smdbRank = 9;
    node.flids.clear();
  }
  RequireSameReports(what, {document, {}, {}, {}}, {DocumentOf(what.parts), ranks, flids, {}},
                     "side files say the same as a document");
}

// A map shows names as they are, and has no way to tell a double quote.
void CheckWithNameMap(Case what) {
  std::string names;
  FabricParts nameless = what.parts;
  for (std::size_t i = 0; i < what.parts.nodes.size(); ++i) {
    NodeSpec& node = what.parts.nodes[i];
    std::replace(node.name.begin(), node.name.end(), '"', '\'');
    node.displayName.reset();
    names += GuidText(node.guid) + " \"" + node.name + "\"\n";
    nameless.nodes[i].name = "x";
  }
  RequireSameReports(what, {DocumentOf(what.parts), {}, {}, {}},
                     {DocumentOf(nameless), {}, {}, names},
                     "a name map says the same as a document");
}

// A dump does not hold all of the fabric, but what it holds is told in any order, and is the same
// as a document of it.
void CheckDumps(Case what) {
  const std::string dump = DumpOf(*BuildFabric(what.parts));
  const CheckResult result = Check(what.options, {dump, {}, {}, {}});
  RequireSoundReports(result);
  Require(result.warnings.empty(), "a dump that was written is read without a warning");
  const std::string reports = ReportsOf(result);
  const std::string again = DumpOf(*result.fabric);
  RequireSame(Look(what.options, {WithRecordsShuffled(again, what.seed), {}, {}, {}}), reports,
              "the order of a dump's records does not matter");
  RequireSame(Look(what.options, {FabricDocumentText(*result.fabric), {}, {}, {}}), reports,
              "a dump says the same as its document");
}

constexpr std::array<void (*)(Case), 5> ways{CheckTwice, CheckInOtherOrder, CheckWithSideFiles,
                                             CheckWithNameMap, CheckDumps};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider bytes(data, size);
  const CheckOptions options = Options(bytes);
  const auto way = bytes.ConsumeIntegralInRange<std::size_t>(0, ways.size() - 1);
  const auto seed = bytes.ConsumeIntegral<std::uint32_t>();
  ways[way]({options, MakeTree(bytes, Name), seed});
  return 0;
}
