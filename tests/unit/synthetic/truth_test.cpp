#include "synthetic/truth.h"

#include <gtest/gtest.h>

#include "support/speeds.h"

namespace fabscope::internal {
namespace {

TEST(TruthTest, WithoutFaultsTellsTheSeedAlone) {
  EXPECT_EQ(TruthText(PlanTree({{1, 2}, {1, 1}}, hdr), 18446744073709551615U, {}),
            R"({"format":"fabscope-truth","version":1,"seed":18446744073709551615,"faults":[]})"
            "\n");
}

class TruthOfFaultTest : public ::testing::Test {
 protected:
  std::string TextOf(FabricPlan plan, FaultKind kind) {
    Random random(1);
    InjectedFault fault;
    EXPECT_EQ(FaultInjector(plan, random).Inject(kind, fault), std::nullopt);
    return TruthText(plan, 1, {&fault, 1});
  }
};
TEST_F(TruthOfFaultTest, ACableIsToldWithBothEndsAndItsSpeed) {
  EXPECT_EQ(TextOf(PlanTree({{1, 1}, {1, 1}}, hdr), FaultKind::MissingLink),
            R"({"format":"fabscope-truth","version":1,"seed":1,"faults":[
{"kind":"missing-link","switches":[{"guid":"0x0200000102000001","name":"spine01"},{"guid":"0x0200000101000001","name":"leaf01"}],"before":[
  {"a":{"guid":"0x0200000102000001","name":"spine01","port":1},"b":{"guid":"0x0200000101000001","name":"leaf01","port":2},"speed":"HDR"}],"after":[]}]}
)");
  EXPECT_EQ(TextOf(PlanTree({{1, 1}, {1, 1}}, hdr), FaultKind::SlowLink),
            R"({"format":"fabscope-truth","version":1,"seed":1,"faults":[
{"kind":"slow-link","switches":[{"guid":"0x0200000102000001","name":"spine01"},{"guid":"0x0200000101000001","name":"leaf01"}],"before":[
  {"a":{"guid":"0x0200000102000001","name":"spine01","port":1},"b":{"guid":"0x0200000101000001","name":"leaf01","port":2},"speed":"HDR"}],"after":[
  {"a":{"guid":"0x0200000102000001","name":"spine01","port":1},"b":{"guid":"0x0200000101000001","name":"leaf01","port":2},"speed":"EDR"}]}]}
)");
}

TEST_F(TruthOfFaultTest, NodesThatCameOrWentAreToldWithTheirLinks) {
  EXPECT_EQ(TextOf(PlanTree({{1, 1}, {1, 1}}, hdr), FaultKind::MissingHost),
            R"({"format":"fabscope-truth","version":1,"seed":1,"faults":[
{"kind":"missing-host","switches":[{"guid":"0x0200000101000001","name":"leaf01"}],"hosts":[{"guid":"0x0200000200000001","name":"host01"}],"removedNodes":["0x0200000200000001"],"before":[
  {"a":{"guid":"0x0200000101000001","name":"leaf01","port":1},"b":{"guid":"0x0200000200000001","name":"host01","port":1},"speed":"HDR"}],"after":[]}]}
)");
  TreeShape roomy{{1, 1}, {1, 1}};
  roomy.radix = 2;
  EXPECT_EQ(TextOf(PlanTree(roomy, hdr), FaultKind::StrayHost),
            R"({"format":"fabscope-truth","version":1,"seed":1,"faults":[
{"kind":"stray-host","switches":[{"guid":"0x0200000102000001","name":"spine01"}],"hosts":[{"guid":"0x0200000300000001","name":"stray-host1"}],"addedNodes":["0x0200000300000001"],"before":[],"after":[
  {"a":{"guid":"0x0200000102000001","name":"spine01","port":2},"b":{"guid":"0x0200000300000001","name":"stray-host1","port":1},"speed":"HDR"}]}]}
)");
}

TEST_F(TruthOfFaultTest, OnSeveralPlanesEveryChipIsTold) {
  const TreeShape twoPlanes{{1, 1}, {1, 1}, 1, 0, 2};
  EXPECT_EQ(TextOf(PlanTree(twoPlanes, hdr), FaultKind::DeadSwitch),
            R"({"format":"fabscope-truth","version":1,"seed":1,"faults":[
{"kind":"dead-switch","switches":[{"guid":"0x0200000102000001","name":"spine01/U1"},{"guid":"0x0200000112000001","name":"spine01/U2"},{"guid":"0x0200000101000001","name":"leaf01/U1"},{"guid":"0x0200000111000001","name":"leaf01/U2"}],"removedNodes":["0x0200000102000001","0x0200000112000001"],"before":[
  {"a":{"guid":"0x0200000102000001","name":"spine01/U1","port":1},"b":{"guid":"0x0200000101000001","name":"leaf01/U1","port":2},"speed":"HDR"},
  {"a":{"guid":"0x0200000112000001","name":"spine01/U2","port":1},"b":{"guid":"0x0200000111000001","name":"leaf01/U2","port":2},"speed":"HDR"}],"after":[]}]}
)");
}

TEST_F(TruthOfFaultTest, AnAsymmetricAPortIsToldWithThePlaneThatIsSlower) {
  const TreeShape twoPlanes{{1, 1}, {1, 1}, 1, 0, 2};
  EXPECT_EQ(TextOf(PlanTree(twoPlanes, hdr), FaultKind::AsymmetricAPort),
            R"({"format":"fabscope-truth","version":1,"seed":1,"faults":[
{"kind":"asymmetric-aport","switches":[{"guid":"0x0200000102000001","name":"spine01/U1"},{"guid":"0x0200000112000001","name":"spine01/U2"},{"guid":"0x0200000101000001","name":"leaf01/U1"},{"guid":"0x0200000111000001","name":"leaf01/U2"}],"before":[
  {"a":{"guid":"0x0200000102000001","name":"spine01/U1","port":1},"b":{"guid":"0x0200000101000001","name":"leaf01/U1","port":2},"speed":"HDR"}],"after":[
  {"a":{"guid":"0x0200000102000001","name":"spine01/U1","port":1},"b":{"guid":"0x0200000101000001","name":"leaf01/U1","port":2},"speed":"EDR"}],"aports":[
  {"ports":[["0x0200000102000001",1],["0x0200000112000001",1]],"asymmetry":1},
  {"ports":[["0x0200000101000001",2],["0x0200000111000001",2]],"asymmetry":1}]}]}
)");
}

TEST_F(TruthOfFaultTest, ASharedFlidIsToldWithItsNewLeaf) {
  FabricPlan plan = PlanTree({{1, 1, 2}, {1, 1, 1}, 1, 0, 2}, hdr);
  ASSERT_EQ(plan.GiveFlids(), std::nullopt);
  EXPECT_EQ(TextOf(plan, FaultKind::SharedFlid),
            R"({"format":"fabscope-truth","version":1,"seed":1,"faults":[
{"kind":"shared-flid","switches":[{"guid":"0x0200000101000001","name":"pod01-leaf01/U1"},{"guid":"0x0200000111000001","name":"pod01-leaf01/U2"},{"guid":"0x0200000101000002","name":"pod02-leaf01/U1"},{"guid":"0x0200000111000002","name":"pod02-leaf01/U2"}],"before":[],"after":[],"addedFlids":[{"guid":"0x0200000101000001","flid":3},{"guid":"0x0200000111000001","flid":3}]}]}
)");
}

}  // namespace
}  // namespace fabscope::internal
