// The findings as data tell what records and report lines tell: put into words again, they give the
// same words.

#include "fat_tree/findings.h"

#include <array>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

#include "fat_tree/node_record.h"
#include "property/stage_run.h"

namespace fabscope {
namespace {

std::string Title(bool isNeighborhood, std::uint64_t id) {
  return (isNeighborhood ? "Neighborhood " : "Connectivity group ") + std::to_string(id);
}

std::string End(const IBNode* node, unsigned port) {
  return "(" + GetNodeRecord(node) + " port: " + std::to_string(port) + ")";
}

std::string Words(const MissingLink& found) {
  return Title(found.isNeighborhood, found.group) + ": missing link between switches (" +
         GetNodeRecord(found.spine) + ") and (" + GetNodeRecord(found.line) + ")";
}

std::string Words(const InvalidLink& found) {
  const std::string end1 = End(found.link.node1, found.link.port1);
  const std::string end2 = End(found.link.node2, found.link.port2);
  if (found.group1 == found.group2) {
    return Title(found.isNeighborhood, found.group1) + " : invalid link between switches " + end1 +
           " and " + end2;
  }
  return "Invalid link between " +
         std::string(found.isNeighborhood ? "neighborhood " : "connectivity group ") +
         std::to_string(found.group1) + " " + end1 + " and " +
         (found.isNeighborhood ? "neighborhood " : "group ") + std::to_string(found.group2) + " " +
         end2;
}

std::string Words(const UnevenLinks& found) {
  const std::string links = found.isUp ? " uplinks" : " downlinks";
  std::string text = Title(found.isNeighborhood, found.group) + ": " +
                     (found.ofSpines ? "spines" : "lines") + " with different number of" + links +
                     " (expected  " + std::to_string(found.expected) + links + ")";
  for (const UnevenLinks::Count& other : found.others) {
    text += "\n\t " + std::to_string(other.links) + links + ": ";
    for (std::size_t i = 0; i < other.nodes.size(); ++i) {
      text += GetNodeRecord(other.nodes[i]) + " ";
      if (i % 8 == 7) text += "\n\t\t";
    }
  }
  return text;
}

std::string Words(const SuspectedBlocking& found) {
  return Title(found.isNeighborhood, found.group) +
         ": suspected blocking configuration  --  total number of spine's uplinks " +
         std::to_string(found.spineUplinks) + " is less then total number of internal links " +
         std::to_string(found.internalLinks);
}

std::string Words(const AsymmetricAPorts& found) {
  return Title(found.isNeighborhood, found.group) + ": found " +
         std::to_string(found.ports.size()) + " asymmetric APort" +
         (found.ports.size() == 1 ? "" : "s") + (found.toHosts ? " connected to CAs" : "");
}

std::string Words(const SharedFlid& found) {
  std::string text =
      "FLID=" + std::to_string(found.flid) + " appears in the following neighborhoods: ";
  for (std::size_t i = 0; i < found.groups.size(); ++i) {
    text += (i == 0 ? "" : ", ") + std::to_string(found.groups[i]);
  }
  return text;
}

std::string Tag(EnFabricErrLevel_t level) {
  return level == EN_FABRIC_ERR_WARNING ? "-W- " : "-E- ";
}

// With its tag, and a line end.
std::string LineOf(const Finding& finding) {
  return std::visit([](const auto& found) { return Tag(found.level) + Words(found) + "\n"; },
                    finding);
}

bool IsRecord(const Finding& finding) {
  return std::holds_alternative<MissingLink>(finding) ||
         std::holds_alternative<InvalidLink>(finding);
}

std::string WithoutInformation(const std::string& text) {
  std::string left;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty() && !line.starts_with("-I- ")) left += line + "\n";
  }
  return left;
}

TEST(FindingsTest, TellInOrderWhatRecordsAndReportLinesTell) {
  std::array<int, std::variant_size_v<Finding>> found{};
  for (std::uint64_t seed = 30'000; seed < 31'000; ++seed) {
    SCOPED_TRACE(seed);
    StageRun run(reference::RandomCase(seed));
    std::string records;
    std::string lines;
    std::uint64_t issues = 0;
    run.topology->SetFindingSink([&](Finding&& finding) {
      ++found[finding.index()];
      issues += IssuesOf(finding);
      (IsRecord(finding) ? records : lines) += LineOf(finding);
    });
    run.RunAll();

    std::string expectedRecords;
    for (FabricErrGeneral* error : run.errors) {
      expectedRecords += Tag(error->GetLevel()) + error->GetErrorLine() + "\n";
    }
    ASSERT_EQ(records, expectedRecords);
    ASSERT_EQ(lines, WithoutInformation(run.validateText));
    ASSERT_EQ(issues, run.topology->GetIssuesCount());
  }
  for (const int count : found) EXPECT_GE(count, 20);
}

}  // namespace
}  // namespace fabscope
