#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <sstream>

#include "check/check.h"
#include "fabric/fabric_walk.h"
#include "reports/text_report.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

CheckResult CheckFile(const std::string& path) {
  CheckOptions options;
  options.fabric = path;
  options.specialNodes = std::make_shared<regExp>("Aggregation Node");
  return RunCheck(options);
}

std::string DumpPath(const std::string& name) { return FABSCOPE_TEST_DATA "/" + name; }

std::vector<std::string> Findings(const CheckResult& result) {
  std::vector<std::string> lines;
  for (const Finding& record : result.findings.Records()) lines.push_back(DescriptionOf(record, 0));
  return lines;
}

struct KnownDump {
  const char* file;
  std::size_t hosts;
  std::size_t roots;
  std::size_t mids;
  std::size_t leaves;
  std::size_t cables;  // those of the hosts included
  bool isClean;
};

std::ostream& operator<<(std::ostream& stream, const KnownDump& dump) {
  return stream << dump.file;
}

class RealDumpTest : public ::testing::TestWithParam<KnownDump> {};

TEST_P(RealDumpTest, HasTheNodesAndCablesItWasMadeWithAndTheTrueRoots) {
  const KnownDump& known = GetParam();
  const CheckResult result = CheckFile(DumpPath(known.file));
  ASSERT_EQ(result.status, CheckStatus::Done) << result.message;
  EXPECT_THAT(result.warnings, IsEmpty());

  const auto& nodes = result.fabric->GetNodes();
  const auto hosts = static_cast<std::size_t>(std::count_if(
      nodes.begin(), nodes.end(), [](const IBNode& node) { return node.nodeType == NodeTypeCA; }));
  EXPECT_EQ(hosts, known.hosts);
  EXPECT_THAT(result.fabric->switches, SizeIs(known.roots + known.mids + known.leaves));
  EXPECT_EQ(result.fabric->GetPorts().size(), 2 * known.cables);
  for (const IBPort& port : result.fabric->GetPorts()) {
    ASSERT_NE(port.remotePort, nullptr);
    ASSERT_EQ(port.remotePort->remotePort, &port);
    ASSERT_TRUE(port.isSymmetricLink());
    ASSERT_EQ(port.speed, 0x400U);
  }

  const auto& ranks = result.topology->GetRanks();
  ASSERT_THAT(ranks, ElementsAre(SizeIs(known.roots), SizeIs(known.mids), SizeIs(known.leaves)));
  for (const IBNode* root : ranks[0]) EXPECT_TRUE(root->name.starts_with("root-")) << root->name;
  for (const IBNode* mid : ranks[1]) EXPECT_TRUE(mid->name.starts_with("mid-")) << mid->name;
  for (const IBNode* leaf : ranks[2]) EXPECT_TRUE(leaf->name.starts_with("leaf-")) << leaf->name;
  EXPECT_EQ(result.HasFindings(), !known.isClean);
}

INSTANTIATE_TEST_SUITE_P(
    AllDumps, RealDumpTest,
    ::testing::Values(KnownDump{"tree-32h.topo", 32, 4, 8, 8, 64, true},
                      KnownDump{"tree-32h-intra.topo", 32, 4, 8, 8, 65, false},
                      KnownDump{"tree-32h-midmid.topo", 32, 4, 8, 8, 65, false},
                      KnownDump{"tree-32h-cross.topo", 32, 4, 8, 8, 65, false},
                      KnownDump{"tree-32h-missing.topo", 32, 4, 8, 8, 63, false},
                      KnownDump{"tree-512h.topo", 512, 64, 64, 64, 1536, true},
                      KnownDump{"tree-2000h.topo", 2000, 100, 200, 200, 6000, true},
                      KnownDump{"tree-11664h.topo.gz", 11664, 324, 648, 648, 34992, true},
                      KnownDump{"tree-27648h.topo.gz", 27648, 576, 1152, 1152, 82944, true}),
    [](const auto& test) {
      std::string name = test.param.file;
      name.resize(name.find(".topo"));
      std::replace(name.begin(), name.end(), '-', '_');
      return name;
    });

// Group ids go on for the whole process, so texts are compared without them.
std::string WithoutGroupIds(const std::string& text) {
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    result += text[at];
    for (const std::string label : {"eighborhood ", "onnectivity group ", "and group "}) {
      if (!result.ends_with(label)) continue;
      while (at + 1 < text.size() && text[at + 1] >= '0' && text[at + 1] <= '9') ++at;
    }
  }
  return result;
}

TEST(WrongCableTest, BetweenTwoLeavesIsNamedWithBothPorts) {
  const CheckResult result = CheckFile(DumpPath("tree-32h-intra.topo"));
  ASSERT_EQ(result.findings.RecordsCount(), 1U);
  EXPECT_EQ(WithoutGroupIds(Findings(result)[0]),
            "Neighborhood  : invalid link between switches (leaf-p0l0 port: 7) and (leaf-p0l1 "
            "port: 7)");
}

TEST(WrongCableTest, BetweenTwoMiddleSwitchesIsNamedWithBothPorts) {
  const CheckResult result = CheckFile(DumpPath("tree-32h-midmid.topo"));
  ASSERT_EQ(result.findings.RecordsCount(), 1U);
  EXPECT_EQ(WithoutGroupIds(Findings(result)[0]),
            "Connectivity group  : invalid link between switches (mid-p0m0 port: 5) and (mid-p1m0 "
            "port: 5)");
}

TEST(WrongCableTest, MissingBetweenLeafAndMiddleSwitchIsNamed) {
  const CheckResult result = CheckFile(DumpPath("tree-32h-missing.topo"));
  ASSERT_EQ(result.findings.RecordsCount(), 1U);
  EXPECT_EQ(WithoutGroupIds(Findings(result)[0]),
            "Neighborhood : missing link between switches (mid-p0m0) and (leaf-p0l0)");
}

// With two leaves a pod nobody can tell that the pod's own two cables outweigh the foreign one: the
// foreign middle switch counts as shared, and the pod's other leaf as missing a cable to it.
TEST(WrongCableTest, IntoAnotherPodShowsAtTheForeignMiddleSwitch) {
  const CheckResult result = CheckFile(DumpPath("tree-32h-cross.topo"));
  ASSERT_EQ(result.findings.RecordsCount(), 1U);
  EXPECT_EQ(WithoutGroupIds(Findings(result)[0]),
            "Neighborhood : missing link between switches (mid-p1m0) and (leaf-p0l0)");
  EXPECT_EQ(result.issuesCount, 10U);
}

std::string ReadFile(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

std::string ReportOf(const std::string& path) {
  std::ostringstream report;
  WriteTextReport(CheckFile(path), {.withDump = false}, report);
  return WithoutGroupIds(report.str());
}

// The records of a dump: each ends with a blank line.
std::vector<std::string> Records(const std::string& dump) {
  std::vector<std::string> records;
  for (std::size_t start = 0; start < dump.size();) {
    const std::size_t end = std::min(dump.find("\n\n", start), dump.size() - 2) + 2;
    records.push_back(dump.substr(start, end - start));
    start = end;
  }
  return records;
}

TEST(RecordOrderTest, DoesNotChangeTheReport) {
  for (const char* file : {"tree-32h-cross.topo", "tree-32h-missing.topo", "tree-512h.topo"}) {
    std::vector<std::string> records = Records(ReadFile(DumpPath(file)));
    ASSERT_GT(records.size(), 52U);
    const std::string expected = ReportOf(DumpPath(file));
    EXPECT_EQ(ReportOf(DumpPath(file)), expected);

    std::mt19937 random(7);
    const std::string shuffledPath = ::testing::TempDir() + "/shuffled.topo";
    for (int round = 0; round < 5; ++round) {
      std::shuffle(records.begin(), records.end(), random);
      std::ofstream shuffled(shuffledPath, std::ios::binary | std::ios::trunc);
      for (const std::string& record : records) shuffled << record;
      shuffled.close();
      EXPECT_EQ(ReportOf(shuffledPath), expected) << file;
    }
    std::filesystem::remove(shuffledPath);
  }
}

}  // namespace
}  // namespace fabscope::internal
