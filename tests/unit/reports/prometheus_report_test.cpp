#include "reports/prometheus_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <string>

#include "fat_tree/neighborhood.h"
#include "platform/version.h"
#include "support/report_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class PrometheusReportTest : public ReportTest {
 protected:
  std::string Numbers(const std::string& rootRegex) {
    std::ostringstream numbers;
    Check(rootRegex);
    result.input = input;
    WritePrometheusReport(result, {12.34567, 1700000000}, numbers);
    return numbers.str();
  }

  std::string input = "net.topo";
};

TEST_F(PrometheusReportTest, AllNumbersOfAFinishedCheck) {
  for (const char* root : {"root0", "root1", "root2"}) fabric.Switch(root);
  for (const std::string leaf : {"leaf0", "leaf1", "leaf2"}) {
    fabric.Switch(leaf).Host("host of " + leaf).Cable(leaf, "host of " + leaf);
    fabric.Cable("root1", leaf).Cable("root2", leaf);
  }
  fabric.Cable("root0", "leaf1").Cable("root0", "leaf2").Switch("stray");
  const std::string numbers = Numbers("^root");
  const std::string group = std::to_string(result.topology->GetNeighborhoods()[0][0]->GetId());
  // Those that were not found are 0: a series that is only there at times is hard to watch.
  std::string findings;
  for (const std::string kind : AllFindings::names) {
    const char* count = kind == "missing-link" ? "1" : kind == "uneven-links" ? "2" : "0";
    findings += R"(fabscope_findings{fabric="net.topo",kind=")" + kind + "\"} " + count + "\n";
  }
  EXPECT_EQ(
      numbers,
      R"(# HELP fabscope_levels Ranks of the fat tree.
# TYPE fabscope_levels gauge
fabscope_levels{fabric="net.topo"} 2
# HELP fabscope_switches Switches by rank, 0 being the roots.
# TYPE fabscope_switches gauge
fabscope_switches{fabric="net.topo",rank="0"} 3
fabscope_switches{fabric="net.topo",rank="1"} 3
# HELP fabscope_switches_outside Switches that are not part of the tree.
# TYPE fabscope_switches_outside gauge
fabscope_switches_outside{fabric="net.topo"} 1
# HELP fabscope_groups Groups of switches by kind.
# TYPE fabscope_groups gauge
fabscope_groups{fabric="net.topo",group_kind="neighborhood"} 1
fabscope_groups{fabric="net.topo",group_kind="connectivity group"} 0
# HELP fabscope_roots_inferred Whether the roots are inferred from all cables: 1, else 0.
# TYPE fabscope_roots_inferred gauge
fabscope_roots_inferred{fabric="net.topo"} 0
# HELP fabscope_roots_misfits Cables that must go plus cables that lack until the tree is proper.
# TYPE fabscope_roots_misfits gauge
fabscope_roots_misfits{fabric="net.topo"} 0
# HELP fabscope_roots_doubted Whether something speaks against the tree: 1, else 0.
# TYPE fabscope_roots_doubted gauge
fabscope_roots_doubted{fabric="net.topo"} 0
# HELP fabscope_error_records Wrong and missing cables.
# TYPE fabscope_error_records gauge
fabscope_error_records{fabric="net.topo"} 1
# HELP fabscope_issues All other issues, as the report counts them.
# TYPE fabscope_issues gauge
fabscope_issues{fabric="net.topo"} 4
# HELP fabscope_findings Findings by kind.
# TYPE fabscope_findings gauge
)" + findings +
          R"(# HELP fabscope_group_findings Findings by kind and group, of groups that have any.
# TYPE fabscope_group_findings gauge
fabscope_group_findings{fabric="net.topo",kind="missing-link",group_kind="neighborhood",group=")" +
          group + R"("} 1
fabscope_group_findings{fabric="net.topo",kind="uneven-links",group_kind="neighborhood",group=")" +
          group + R"("} 2
# HELP fabscope_check_duration_seconds How long the check took.
# TYPE fabscope_check_duration_seconds gauge
fabscope_check_duration_seconds{fabric="net.topo"} 12.346
# HELP fabscope_last_success_timestamp_seconds When the check was finished, in seconds since 1970.
# TYPE fabscope_last_success_timestamp_seconds gauge
fabscope_last_success_timestamp_seconds{fabric="net.topo"} 1700000000
# HELP fabscope_tool_info What has checked.
# TYPE fabscope_tool_info gauge
fabscope_tool_info{fabric="net.topo",tool=")" +
          std::string(GetToolVersion()) + "\"} 1\n");
}

TEST_F(PrometheusReportTest, ALinkBetweenTwoGroupsCountsForEach) {
  AddThreeLevelTree(fabric, 2, 2, 2, 4, 1);
  fabric.Cable("root0", "root4");
  const std::string numbers = Numbers("^root");
  EXPECT_THAT(numbers, HasSubstr(R"(fabscope_findings{fabric="net.topo",kind="invalid-link"} 1)"));
  const std::string ofGroup = R"(kind="invalid-link",group_kind="connectivity group",group=)";
  for (const FTNeighborhood* group : result.topology->GetNeighborhoods()[0]) {
    EXPECT_THAT(numbers, HasSubstr(ofGroup + '"' + std::to_string(group->GetId()) + "\"} 1"));
  }
}

TEST_F(PrometheusReportTest, RootsAreToldByMethodMisfitsAndDoubt) {
  AddTwoLevelTree(fabric, 1, 1, 1);
  result.roots = {RootsFrom::Inferred, 7, "", "something"};
  const std::string numbers = Numbers("^root");
  EXPECT_THAT(numbers, HasSubstr("fabscope_roots_inferred{fabric=\"net.topo\"} 1\n"));
  EXPECT_THAT(numbers, HasSubstr("fabscope_roots_misfits{fabric=\"net.topo\"} 7\n"));
  EXPECT_THAT(numbers, HasSubstr("fabscope_roots_doubted{fabric=\"net.topo\"} 1\n"));
}

TEST_F(PrometheusReportTest, TheNameOfTheFabricCannotEndItsLabel) {
  AddTwoLevelTree(fabric, 1, 1, 1);
  input = "a\"b\\c\nd\xff";
  EXPECT_THAT(Numbers("^root"),
              HasSubstr("fabscope_levels{fabric=\"a\\\"b\\\\c?d\xef\xbf\xbd\"} 2\n"));
}

TEST_F(PrometheusReportTest, TellsHowManyRecordsTheFindingsLack) {
  AddTwoLevelTree(fabric, 3, 2, 0);
  fabric.Switch("leaf").Cable("leaf", "root0");
  EXPECT_THAT(Numbers("^root"), Not(HasSubstr("not_listed")));
  mostRecords = 1;
  const std::string numbers = Numbers("^root");
  EXPECT_THAT(numbers, HasSubstr("fabscope_error_records{fabric=\"net.topo\"} 2\n"));
  EXPECT_THAT(numbers, HasSubstr("# HELP fabscope_error_records_not_listed Of them those that the "
                                 "findings below do not count.\n"));
  EXPECT_THAT(numbers, HasSubstr("fabscope_error_records_not_listed{fabric=\"net.topo\"} 1\n"));
  EXPECT_THAT(numbers,
              HasSubstr("fabscope_findings{fabric=\"net.topo\",kind=\"missing-link\"} 1\n"));
}

}  // namespace
}  // namespace fabscope::internal
