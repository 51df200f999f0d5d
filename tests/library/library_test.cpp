#include <array>
#include <cstdio>
#include <fabscope/check.h>
#include <fabscope/error.h>
#include <fabscope/fabric.h>
#include <fabscope/repair.h>
#include <fabscope/reports.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using namespace fabscope;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;
using ::testing::TestWithParam;
using ::testing::Values;

const std::string data = FABSCOPE_TEST_DATA;

std::string PathOf(const std::string& name) { return std::filesystem::path(data) / name; }

// What the command writes to standard output.
std::string RunCommand(const std::string& words) {
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(
      // NOLINTNEXTLINE(cert-env33-c): the words are this file's own
      popen((std::string(FABSCOPE_COMMAND " ") + words).c_str(), "r"), pclose);
  std::string output;
  std::array<char, 65536> piece{};
  while (const std::size_t size = std::fread(piece.data(), 1, piece.size(), pipe.get())) {
    output.append(piece.data(), size);
  }
  return output;
}

CheckOptions WithRepairs() {
  CheckOptions options;
  options.withRepairs = true;
  return options;
}

std::string JsonOf(const Fabric& fabric) {
  std::ostringstream json;
  WriteJson(Check(fabric, WithRepairs()), json);
  return json.str();
}

template <typename Result, typename... More>
std::string Written(void (*write)(const Result&, std::ostream&, More...), const Result& result,
                    More... more) {
  std::ostringstream text;
  write(result, text, more...);
  return text.str();
}

// A proper tree of four switches whose leaves have unlike numbers of hosts, if the adapter that
// aggregates is taken for one.
std::string TreeWithAggregationNode() {
  struct End {
    std::string key;
    std::string name;
    int ports;
    std::vector<std::pair<int, std::pair<std::size_t, int>>> cables;
  };
  // Both spines lead to both leaves; the first leaf has one adapter more.
  const std::vector<End> nodes{
      {"S-0000000000000001", "spine-1", 4, {{1, {2, 1}}, {2, {3, 1}}}},
      {"S-0000000000000002", "spine-2", 4, {{1, {2, 2}}, {2, {3, 2}}}},
      {"S-0000000000000003",
       "leaf-1",
       6,
       {{1, {0, 1}}, {2, {1, 1}}, {3, {4, 1}}, {4, {5, 1}}, {5, {8, 1}}}},
      {"S-0000000000000004", "leaf-2", 6, {{1, {0, 2}}, {2, {1, 2}}, {3, {6, 1}}, {4, {7, 1}}}},
      {"H-0000000000000011", "host-1", 1, {{1, {2, 3}}}},
      {"H-0000000000000012", "host-2", 1, {{1, {2, 4}}}},
      {"H-0000000000000013", "host-3", 1, {{1, {3, 3}}}},
      {"H-0000000000000014", "host-4", 1, {{1, {3, 4}}}},
      {"H-0000000000000021", "Aggregation Node", 1, {{1, {2, 5}}}}};
  std::ostringstream dump;
  for (const End& node : nodes) {
    const bool isSwitch = node.key.front() == 'S';
    dump << (isSwitch ? "Switch " : "Ca ") << node.ports << " \"" << node.key << "\" # \""
         << node.name << "\"\n";
    for (const auto& [port, far] : node.cables) {
      const End& other = nodes[far.first];
      dump << '[' << port << "] \"" << other.key << "\"[" << far.second << "] # \"" << other.name
           << "\" lid 1 4xHDR\n";
    }
    dump << '\n';
  }
  return dump.str();
}

class LibraryAgreesWithTheCommand : public TestWithParam<const char*> {
 protected:
  std::string path_ = std::filesystem::path(data) / GetParam();
};

TEST_P(LibraryAgreesWithTheCommand, OnAllThatACheckTells) {
  EXPECT_EQ(JsonOf(LoadFabric(path_)), RunCommand("check --json - " + path_));
}

TEST_P(LibraryAgreesWithTheCommand, OnReports) {
  const CheckResult result = Check(LoadFabric(path_));
  EXPECT_EQ(Written(WriteText, result, false), RunCommand("check " + path_));
  EXPECT_EQ(Written(WriteText, result, true), RunCommand("check --quiet " + path_));
  EXPECT_EQ(Written(WriteCsv, result), RunCommand("check --csv - " + path_));
  EXPECT_EQ(Written(WriteSvg, result), RunCommand("check --svg - " + path_));
  EXPECT_EQ(Written(WriteHtml, Check(LoadFabric(path_), WithRepairs())),
            RunCommand("check --html - " + path_));
}

TEST_P(LibraryAgreesWithTheCommand, OnRepairs) {
  const RepairPlan plan = FindRepairs(LoadFabric(path_));
  std::ostringstream text;
  std::ostringstream csv;
  std::ostringstream json;
  plan.WriteText(text);
  plan.WriteCsv(csv);
  plan.WriteJson(json);
  EXPECT_EQ(text.str(), RunCommand("repair " + path_));
  EXPECT_EQ(csv.str(), RunCommand("repair --csv - " + path_));
  EXPECT_EQ(json.str(), RunCommand("repair --json - " + path_));
}

INSTANTIATE_TEST_SUITE_P(Dumps, LibraryAgreesWithTheCommand,
                         Values("tree-32h.topo", "tree-32h-cross.topo", "tree-32h-intra.topo",
                                "tree-32h-midmid.topo", "tree-32h-missing.topo", "tree-512h.topo",
                                "tree-2000h.topo", "tree-11664h.topo.gz", "tree-27648h.topo.gz",
                                "tangle.json"));

// Each changes the result, and changes it as the command's option does.
TEST(Library, OptionsMeanWhatThoseOfTheCommandMean) {
  const auto expectSame = [](const std::string& file, const std::string& words, auto change) {
    CheckOptions options = WithRepairs();
    const Fabric fabric = LoadFabric(PathOf(file));
    const std::string usual = Written(WriteJson, Check(fabric, options));
    change(options);
    const std::string changed = Written(WriteJson, Check(fabric, options));
    EXPECT_NE(changed, usual) << words;
    EXPECT_EQ(changed, RunCommand("check --json - " + words + ' ' + PathOf(file) + " 2>/dev/null"));
  };
  const std::string cross = "tree-32h-cross.topo";
  expectSame(cross, "--roots inferred", [](auto& options) { options.roots = Roots::Inferred; });
  expectSame(cross, "--roots smdb", [](auto& options) { options.roots = Roots::Smdb; });
  expectSame(cross, "--root-regex ^mid", [](auto& options) {
    options.roots = Roots::Regex;
    options.rootRegex = "^mid";
  });
  expectSame(cross, "--roots search --equal 7 --retries 3", [](auto& options) {
    options.roots = Roots::Search;
    options.equalClassifications = 7;
    options.retries = 3;
  });
  expectSame(cross, "--merge-percent 10", [](auto& options) { options.mergePercent = 10; });
  expectSame(cross, "--show-guid node", [](auto& options) { options.showGuid = GuidStyle::Node; });
  expectSame(cross, "--show-guid system",
             [](auto& options) { options.showGuid = GuidStyle::System; });
  expectSame(cross, "--max-records 0", [](auto& options) { options.maxRecords = 0; });
}

TEST(Library, ReadsTheFilesThatGoWithAFabric) {
  const std::string folder = std::filesystem::path(testing::TempDir()) / "side-";
  std::ofstream(folder + "names") << "0x200000 \"renamed\"\n";
  std::ofstream(folder + "ranks") << "guid,rank\n0x200010,0\n0x200011,0\n0x200012,0\n0x200013,0\n";
  std::ofstream(folder + "flids") << "guid,flid\n0x200000,7\n0x200004,7\n";
  LoadOptions load;
  load.nodeNameMap = folder + "names";
  load.ranks = folder + "ranks";
  load.flids = folder + "flids";
  CheckOptions options = WithRepairs();
  options.roots = Roots::Smdb;
  const std::string path = PathOf("tree-32h.topo");
  const std::string json = Written(WriteJson, Check(LoadFabric(path, load), options));
  EXPECT_EQ(json, RunCommand("check --json - --node-name-map " + load.nodeNameMap + " --ranks " +
                             load.ranks + " --flids " + load.flids + ' ' + path));
  EXPECT_EQ(LoadFabric(path, load).FindNode(0x200000)->Name(), "renamed");
  EXPECT_THAT(json, HasSubstr("shared-flid"));
}

TEST(Library, DoesNotCountAggregationNodesAsHosts) {
  const std::string path = std::filesystem::path(testing::TempDir()) / "aggregation.topo";
  std::ofstream(path) << TreeWithAggregationNode();
  const CheckResult result = Check(LoadFabric(path));
  EXPECT_EQ(Written(WriteText, result, false), RunCommand("check " + path));
  EXPECT_FALSE(result.HasFindings());

  LoadOptions none;
  none.specialNodes.clear();
  EXPECT_THAT(Check(LoadFabric(path, none)).Findings(), SizeIs(1));
}

TEST(Library, TellsFindingsAsValues) {
  const CheckResult result = Check(LoadFabric(data + "/tree-32h-intra.topo"));
  ASSERT_TRUE(result.IsComplete());
  const std::vector<Finding> findings = result.Findings();
  ASSERT_THAT(findings, SizeIs(result.FindingCount()));
  ASSERT_FALSE(findings.empty());
  const std::string report = Written(WriteText, result, false);
  std::uint64_t records = 0;
  std::uint64_t issues = 0;
  for (const Finding& finding : findings) {
    EXPECT_THAT(report,
                HasSubstr((finding.level == Level::Error ? "-E- " : "-W- ") + finding.text + '\n'));
    records += finding.isRecord ? 1 : 0;
    issues += finding.issues;
  }
  EXPECT_EQ(records, result.RecordCount());
  EXPECT_EQ(issues, result.IssueCount());
  const Finding& first = findings.front();
  EXPECT_EQ(first.kind, "invalid-link");
  ASSERT_THAT(first.ports, SizeIs(2));
  EXPECT_EQ(first.ports[0].Peer(), first.ports[1]);
  EXPECT_EQ(result.FindingAt(0).text, first.text);
}

TEST(Library, WalksRanksGroupsAndCables) {
  const CheckResult result = Check(LoadFabric(data + "/tree-32h.topo"));
  const Fabric fabric = result.CheckedFabric();
  const std::vector<std::vector<Node>> ranks = result.Ranks();
  std::size_t switches = 0;
  for (std::size_t rank = 0; rank < ranks.size(); ++rank) {
    switches += ranks[rank].size();
    for (const Node& node : ranks[rank]) EXPECT_EQ(result.RankOf(node), static_cast<int>(rank));
  }
  EXPECT_EQ(switches, fabric.Switches().size());
  for (const Group& group : result.Groups()) {
    EXPECT_EQ(group.isNeighborhood, group.rank + 2 == ranks.size());
    for (const Node& spine : group.spines) {
      EXPECT_EQ(result.RankOf(spine), static_cast<int>(group.rank));
    }
  }
  for (const Node& node : fabric.Nodes()) {
    EXPECT_EQ(fabric.NodeAt(node.Index()), node);
    EXPECT_EQ(fabric.FindNode(node.Guid()), node);
    for (const Port& port : node.CabledPorts()) {
      EXPECT_EQ(port, node.PortAt(port.Number()));
      EXPECT_EQ(port.Owner(), node);
      EXPECT_EQ(port.Peer()->Peer(), port);
    }
  }
  EXPECT_THROW(std::ignore = fabric.NodeAt(fabric.NodeCount()), std::out_of_range);
}

TEST(Library, RepairsAFabric) {
  const RepairPlan plan = FindRepairs(LoadFabric(data + "/tree-32h-cross.topo"));
  ASSERT_TRUE(plan.IsKnown()) << plan.Message();
  const std::vector<RepairStep> steps = plan.Steps();
  ASSERT_THAT(steps, SizeIs(1));
  EXPECT_EQ(steps[0].action, RepairAction::Disconnect);
  EXPECT_EQ(steps[0].trust, RepairClass::Sure);
  ASSERT_THAT(steps[0].cables, SizeIs(1));
  const Cable& before = steps[0].cables[0].before.value();
  EXPECT_EQ(before.upper.Peer(), before.lower);
  EXPECT_FALSE(Check(plan.Repaired()).HasFindings());
  EXPECT_THAT(FindRepairs(plan.Repaired()).Steps(), IsEmpty());
}

TEST(Library, ResultsOutliveTheirFabric) {
  const auto check = [] { return Check(LoadFabric(data + "/tree-32h-intra.topo")); };
  EXPECT_EQ(check().Findings().front().kind, "invalid-link");
  const CheckResult result = check();
  EXPECT_THAT(std::string(result.Findings().front().ports[0].Owner().Name()), HasSubstr("leaf"));
}

TEST(Library, NoTreeIsAResult) {
  const CheckResult result = Check(ParseFabric("Switch 4 \"S-1\" # \"alone\"\n", "alone"));
  EXPECT_FALSE(result.IsComplete());
  EXPECT_NE(result.Message(), "");
  EXPECT_THAT(result.Ranks(), IsEmpty());
  EXPECT_THAT(result.Groups(), IsEmpty());
  EXPECT_EQ(result.RankOf(result.CheckedFabric().NodeAt(0)), -1);
  EXPECT_EQ(Written(WriteSvg, result), "");
  EXPECT_FALSE(FindRepairs(result.CheckedFabric()).IsKnown());
}

TEST(Library, AnErrorTellsItsPlace) {
  try {
    ParseFabric("Switch 4 \"S-1\" # \"a\"\nSwitch x\n", "net.topo");
    FAIL() << "nothing was thrown";
  } catch (const Error& error) {
    EXPECT_EQ(error.File(), "net.topo");
    EXPECT_EQ(error.Line(), 2);
    EXPECT_GT(error.Column(), 0);
    EXPECT_THAT(error.what(), StartsWith("net.topo:2:"));
    EXPECT_THAT(error.what(), HasSubstr(error.Reason()));
    Error other("other", {}, 0, 0, "other");
    other = error;
    EXPECT_STREQ(other.what(), error.what());
  }
  EXPECT_THROW(LoadFabric("/no/such/file"), Error);
}

// What an operation throws, or an empty text.
template <typename Operation>
std::string Thrown(Operation operation) {
  try {
    operation();
  } catch (const std::exception& error) {
    return error.what();
  }
  return {};
}

TEST(Library, OptionsThatCannotBeUsedAreErrors) {
  const std::string path = data + "/tree-32h.topo";
  const Fabric fabric = LoadFabric(path);
  const auto refusal = [&](auto change) {
    CheckOptions options;
    change(options);
    return Thrown([&] { Check(fabric, options); });
  };
  EXPECT_EQ(refusal([](CheckOptions& options) { options.retries = -1; }),
            "CheckOptions::retries: expected 0 or more");
  EXPECT_EQ(refusal([](CheckOptions& options) { options.equalClassifications = 0; }),
            "CheckOptions::equalClassifications: expected 1 or more");
  for (const int percent : {-1, 101}) {
    EXPECT_EQ(refusal([&](CheckOptions& options) { options.mergePercent = percent; }),
              "CheckOptions::mergePercent: expected 0 to 100");
  }
  EXPECT_EQ(refusal([](CheckOptions& options) { options.roots = static_cast<Roots>(9); }),
            "CheckOptions::roots: expected one of Roots");
  EXPECT_THAT(refusal([](CheckOptions& options) {
                options.roots = Roots::Regex;
                options.rootRegex = "(";
              }),
              StartsWith("expected a POSIX extended regular expression: "));
  LoadOptions load;
  load.specialNodes = "[";
  EXPECT_THAT(Thrown([&] { LoadFabric(path, load); }),
              StartsWith("expected a POSIX extended regular expression: "));
  std::ostringstream none;
  EXPECT_EQ(Thrown([&] { WriteFabric(fabric, static_cast<Format>(9), none); }),
            "expected one of Format");
}

TEST(Library, PlacesThatAreNotThereAreOutOfRange) {
  const CheckResult result = Check(LoadFabric(data + "/tree-32h-intra.topo"));
  EXPECT_EQ(Thrown([&] { std::ignore = result.FindingAt(1); }),
            "fabscope::CheckResult::FindingAt: 1 of 1");
  const Node node = result.CheckedFabric().Switches().front();
  EXPECT_EQ(Thrown([&] { std::ignore = node.PortAt(0); }),
            "fabscope::Node::PortAt: 0 is not 1 to " + std::to_string(node.PortCount()));
}

TEST(Library, WritesAFabricInEveryFormat) {
  const std::string path = data + "/tree-32h.topo";
  const Fabric fabric = LoadFabric(path);
  for (const auto& [format, name] : {std::pair{Format::Document, "document"},
                                     {Format::TopologyDump, "ibnetdiscover"},
                                     {Format::NetFile, "ibsim"},
                                     {Format::Dot, "dot"},
                                     {Format::GraphMl, "graphml"}}) {
    std::ostringstream text;
    WriteFabric(fabric, format, text);
    EXPECT_EQ(text.str(),
              RunCommand("convert " + path + " --format " + name + " -o - 2>/dev/null"));
  }
}

TEST(Library, ThreadsCheckTheSameAndDifferentFabrics) {
  const std::vector<std::string> names{"tree-32h-cross.topo", "tree-32h-missing.topo",
                                       "tree-512h.topo", "tree-2000h.topo"};
  const Fabric shared = LoadFabric(PathOf(names[0]));
  std::vector<std::string> expected;
  for (const std::string& name : names) expected.push_back(JsonOf(LoadFabric(PathOf(name))));
  std::vector<std::array<std::string, 2>> seen(names.size());
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < names.size(); ++i) {
    threads.emplace_back([&, i] {
      seen[i] = {JsonOf(shared), JsonOf(LoadFabric(PathOf(names[i])))};
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (std::size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(seen[i][0], expected[0]);
    EXPECT_EQ(seen[i][1], expected[i]);
  }
}

}  // namespace
