#include "reports/repair_report.h"

#include <gmock/gmock.h>

#include "reports/json_report.h"
#include "support/repair_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;

// Two pods of two leaves and two mids, two roots for each mid; leaves have two hosts on ports 3, 4.
class RepairReportTest : public RepairTest {
 protected:
  RepairReportTest() { AddThreeLevelTree(tree, 2, 2, 2, 2, 2); }

  static RepairResult Result(std::unique_ptr<IBFabric> fabric, RepairPlan plan) {
    return RepairTest::Result(std::move(fabric), std::move(plan), "net.topo");
  }
  TreeRanks PodRanks() { return Ranks({"root", "mid", "leaf"}); }

  // Somebody has exchanged an up-link of two pods.
  CableChanges Swap() { return Exchange("mid1.0:1", "leaf0.0:3", "mid0.0:1", "leaf1.0:3"); }
  CableChanges Moved() { return Move("mid1.1:5", "mid0.1:1", "leaf0.0:4"); }
  CableChanges Lacking() { return Plug("mid0.1:2", "leaf0.1:4"); }
  CableChanges Spare() { return Unplug("mid1.1:6", "leaf0.1:5"); }
  // All four at once.
  RepairResult ResultOfAll(RepairStatus status = RepairStatus::Repairs) {
    RepairPlan plan = PlanOfSwap();
    plan.status = status;
    plan.steps.push_back(
        Step(RepairAction::Move, RepairReason::WrongSpine, Moved(), RepairClass::Likely));
    plan.steps.push_back(Step(RepairAction::Connect, RepairReason::LinkLacking, Lacking()));
    plan.steps.push_back(
        Step(RepairAction::Disconnect, RepairReason::TooMany, Spare(), RepairClass::Ask));
    plan.steps.back().alternatives = {Move("mid1.1:6", "mid0.1:5", "leaf0.1:5"),
                                      Move("leaf0.1:5", "leaf1.1:5", "mid1.1:6")};
    plan.lowerBound = 3;
    return Result(Changed({Undo(Swap()), Undo(Moved()), Undo(Lacking()), Undo(Spare())}),
                  std::move(plan));
  }
  RepairPlan PlanOfSwap() {
    RepairPlan plan;
    plan.ranks = PodRanks();
    plan.steps.push_back(Step(RepairAction::Swap, RepairReason::WrongGroup, Swap()));
    return plan;
  }
  RepairResult ResultOfSwap() { return Result(Changed({Undo(Swap())}), PlanOfSwap()); }

  static std::string Text(const RepairResult& result) {
    std::ostringstream stream;
    WriteRepairReport(result, stream);
    return stream.str();
  }
  static std::string Csv(const RepairResult& result) {
    std::ostringstream stream;
    WriteRepairCsv(result, stream);
    return stream.str();
  }
  static std::string Json(const RepairResult& result) {
    std::ostringstream stream;
    WriteRepairJson(result, stream);
    return stream.str();
  }
};

TEST_F(RepairReportTest, TellsWhichEndsToExchange) {
  EXPECT_EQ(Text(ResultOfSwap()),
            "net.topo: 12 switches, 16 cables between them, 3 levels\n"
            "1. [sure] swap   leaf0.0 port 3 and leaf1.0 port 3 at their upper ends: mid1.0 port "
            "1 <-> mid0.0 port 1\n"
            "   Each of the two leads into the group of the other.\n"
            "1 repair (1 sure); afterwards: 0 error records, 0 issues\n");
}

TEST_F(RepairReportTest, TellsEveryKindOfStep) {
  EXPECT_EQ(Text(ResultOfAll()),
            "net.topo: 12 switches, 16 cables between them, 3 levels\n"
            "1. [sure] swap   leaf0.0 port 3 and leaf1.0 port 3 at their upper ends: mid1.0 port "
            "1 <-> mid0.0 port 1\n"
            "   Each of the two leads into the group of the other.\n"
            "2. [likely] move   leaf0.0 port 4 at its upper end: mid1.1 port 5 -> mid0.1 port 1\n"
            "   mid1.1 has a cable too many to leaf0.0, mid0.1 one too few.\n"
            "3. [sure] connect leaf0.1 port 4 to mid0.1 port 2\n"
            "   All others of the group have a link here: a cable is missing, or its link is "
            "down.\n"
            "4. [ask] disconnect leaf0.1 port 5 from mid1.1 port 6\n"
            "   The two switches have more cables than the other pairs of their group.\n"
            "   or a. move   leaf0.1 port 5 at its upper end: mid1.1 port 6 -> mid0.1 port 5\n"
            "   or b. move   mid1.1 port 6 at its lower end: leaf0.1 port 5 -> leaf1.1 port 5\n"
            "4 repairs (2 sure, 1 likely, 1 ask); afterwards: 0 error records, 0 issues\n");
}

TEST_F(RepairReportTest, SaysWhenNoFewerWillDo) {
  RepairResult result = ResultOfSwap();
  result.proven.plan.lowerBound = 1;
  EXPECT_THAT(Text(result), HasSubstr(" issues; no fewer will do\n"));
}

TEST_F(RepairReportTest, TellsEndsBelowAndEndsOfOneRank) {
  const TreeRanks ranks = PodRanks();
  const SwitchNames names(tree.Build(), 0);
  const auto text = [&](const CableChanges& cables) { return StepText(cables, ranks, names); };
  // The same swap, told by the ends that stay above.
  EXPECT_EQ(text({{Cable("mid1.0:1", "leaf0.0:3"), Cable("mid1.0:1", "leaf1.0:3")},
                  {Cable("mid0.0:1", "leaf1.0:3"), Cable("mid0.0:1", "leaf0.0:3")}}),
            "swap   mid1.0 port 1 and mid0.0 port 1 at their lower ends: leaf0.0 port 3 <-> "
            "leaf1.0 port 3");
  EXPECT_EQ(text({{Cable("mid0.0:5", "mid1.0:5"), Cable("root0:5", "mid1.0:5")}}),
            "move   mid1.0 port 5 at its other end: mid0.0 port 5 -> root0 port 5");
  EXPECT_EQ(text({{Cable("mid0.0:5", "mid1.0:5"), Cable("mid0.0:5", "leaf0.0:5")},
                  {Cable("leaf0.0:5", "leaf0.1:5"), Cable("mid1.0:5", "leaf0.1:5")}}),
            "swap   mid0.0 port 5 and leaf0.1 port 5 at their other ends: mid1.0 port 5 <-> "
            "leaf0.0 port 5");
}

TEST_F(RepairReportTest, TellsWhatIsNoPlainStep) {
  const TreeRanks ranks = PodRanks();
  const SwitchNames names(tree.Build(), 0);
  EXPECT_EQ(
      StepText({{Cable("mid0.0:5", "leaf1.0:5"), Cable("mid1.0:6", "leaf0.0:6")}}, ranks, names),
      "move   both ends of the cable from leaf1.0 port 5 to mid0.0 port 5: now from leaf0.0 "
      "port 6 to mid1.0 port 6");
  EXPECT_EQ(StepText({{Cable("mid0.0:5", "leaf1.0:5"), std::nullopt},
                      {std::nullopt, Cable("mid1.0:6", "leaf0.0:6")}},
                     ranks, names),
            "disconnect leaf1.0 port 5 from mid0.0 port 5; connect leaf0.0 port 6 to mid1.0 "
            "port 6");
}

TEST_F(RepairReportTest, GivesAReasonForEachKindOfFault) {
  const SwitchNames names(tree.Build(), 0);
  const auto reason = [&](RepairAction action, RepairReason why, CableChanges cables) {
    return ReasonText(Step(action, why, std::move(cables)), names);
  };
  std::vector<std::string> texts;
  for (const RepairReason why :
       {RepairReason::WrongGroup, RepairReason::WrongSpine, RepairReason::SameRank,
        RepairReason::SkipsRank, RepairReason::TooMany, RepairReason::LinkLacking,
        RepairReason::Exchanged, RepairReason::Rotated}) {
    texts.push_back(reason(RepairAction::Swap, why, Swap()));
    texts.push_back(reason(RepairAction::Move, why, Moved()));
    texts.push_back(reason(RepairAction::Disconnect, why, Spare()));
  }
  EXPECT_THAT(
      texts,
      ElementsAre(
          "Each of the two leads into the group of the other.",
          "The cable leads into another group, while its own lacks one.",
          "The cable leads into another group.",
          "In their group a spine has a cable too many, another one too few.",
          "mid1.1 has a cable too many to leaf0.0, mid0.1 one too few.",
          "In their group a spine has a cable too many, another one too few.",
          "Each of the two joins switches of one rank.",
          "The cable joins two switches of one rank.", "The cable joins two switches of one rank.",
          "Each of the two joins ranks that are not neighbors.",
          "The cable joins ranks that are not neighbors.",
          "The cable joins ranks that are not neighbors.",
          "The two switches have more cables than the other pairs of their group.",
          "The two switches have more cables than the other pairs of their group.",
          "The two switches have more cables than the other pairs of their group.",
          "All others of the group have a link here: a cable is missing, or its link is down.",
          "All others of the group have a link here: a cable is missing, or its link is down.",
          "All others of the group have a link here: a cable is missing, or its link is down.",
          "Each of the two is plugged in where the other belongs.",
          "Each of the two is plugged in where the other belongs.",
          "Each of the two is plugged in where the other belongs.",
          "Three or more cables are plugged in where others of them belong.",
          "Three or more cables are plugged in where others of them belong.",
          "Three or more cables are plugged in where others of them belong."));
}

TEST_F(RepairReportTest, TellsNotesInWords) {
  const SwitchNames names(tree.Build(), 0);
  const auto index = [this](const char* name) { return tree[name]->index; };
  const std::vector<RepairNote> notes{
      {RepairNote::Kind::DeadSwitch, 1, {index("leaf0.0"), index("leaf0.1")}, {4}},
      {RepairNote::Kind::DeadSwitch, 1, {index("leaf0.0")}, {4, 5}},
      {RepairNote::Kind::SelfLoop, 2, {index("leaf0.0")}, {5, 6}},
      {RepairNote::Kind::HostsOnSpines, 0, {index("root0"), index("root1"), index("root2")}, {}},
      {RepairNote::Kind::HostsOnSpines, 1, {index("mid0.0")}, {}},
      {RepairNote::Kind::UnusualGroup, 1, {index("mid0.0"), index("mid0.1")}, {}},
      {RepairNote::Kind::UncertainGroup, -1, {index("mid0.0"), index("mid0.1")}, {}},
      {RepairNote::Kind::SwitchWithoutTree, -1, {index("leaf1.1")}, {}},
      {RepairNote::Kind::SwitchWithoutTree,
       -1,
       {index("root0"), index("root1"), index("root2"), index("root3"), index("mid0.0"),
        index("mid0.1"), index("mid1.0")},
       {}}};
  std::vector<std::string> texts;
  for (const RepairNote& note : notes) texts.push_back(NoteText(note, names));
  EXPECT_THAT(
      texts,
      ElementsAre("a switch is dead or missing: port 4 of leaf0.0 and leaf0.1 is empty, where "
                  "their siblings use it",
                  "a switch is dead or missing: ports 4 and 5 of leaf0.0 are empty, where their "
                  "siblings use them",
                  "a cable leads from leaf0.0 to the same switch: ports 5 and 6",
                  "root0, root1 and root2 of rank 0 lead to hosts, as only leaves should",
                  "mid0.0 of rank 1 leads to hosts, as only leaves should",
                  "the group of mid0.0 and mid0.1 of rank 1 has another size than those beside it, "
                  "perhaps by design",
                  "too much of the group of mid0.0 and mid0.1 is wrong to say what belongs where",
                  "leaf1.1 has no place in the tree",
                  "root0, root1, root2, root3, mid0.0 and 2 more have no place in the tree"));
}

TEST_F(RepairReportTest, ProgramsKnowNotesByTheirKind) {
  std::vector<std::string> kinds;
  for (const RepairNote::Kind kind :
       {RepairNote::Kind::DeadSwitch, RepairNote::Kind::SelfLoop, RepairNote::Kind::HostsOnSpines,
        RepairNote::Kind::UnusualGroup, RepairNote::Kind::UncertainGroup,
        RepairNote::Kind::SwitchWithoutTree}) {
    kinds.emplace_back(KindOf(RepairNote{kind, -1, {}, {}}));
  }
  EXPECT_THAT(kinds, ElementsAre("dead-switch", "self-loop", "hosts-on-spines", "unusual-group",
                                 "uncertain-group", "switch-without-tree"));
}

TEST_F(RepairReportTest, NotesStandBetweenStepsAndVerdict) {
  RepairResult result = ResultOfSwap();
  result.proven.plan.notes = {
      {RepairNote::Kind::SwitchWithoutTree, -1, {tree["leaf1.1"]->index}, {}}};
  EXPECT_THAT(Text(result), HasSubstr("\nnote: leaf1.1 has no place in the tree\n1 repair"));
}

TEST_F(RepairReportTest, AFabricInOrderNeedsNoRepairs) {
  RepairPlan plan;
  plan.ranks = PodRanks();
  EXPECT_EQ(Text(Result(Changed({}), plan)),
            "net.topo: 12 switches, 16 cables between them, 3 levels\n"
            "no repairs\n");
  plan.ranks = PodRanks();
  EXPECT_EQ(Text(Result(Changed({Undo(Spare())}), plan)),
            "net.topo: 12 switches, 17 cables between them, 3 levels\n"
            "no repairs; no cable cures what is found: 1 error records, 10 issues\n");
}

TEST_F(RepairReportTest, AbstainsWithTheReason) {
  RepairPlan plan;
  plan.ranks = PodRanks();
  plan.status = RepairStatus::Abstained;
  plan.message = "too much is wrong";
  EXPECT_EQ(Text(Result(Changed({}), plan)),
            "net.topo: 12 switches, 16 cables between them, 3 levels\n"
            "no repairs proposed: too much is wrong\n");
  RepairResult partly = ResultOfAll(RepairStatus::Abstained);
  partly.proven.plan.message = "too much is wrong";
  EXPECT_THAT(
      Text(partly),
      EndsWith("\n4 repairs (2 sure, 1 likely, 1 ask); afterwards: 0 error records, 0 issues; "
               "beyond that none proposed: too much is wrong\n"));
}

TEST_F(RepairReportTest, CsvHasARowForEachEnd) {
  EXPECT_EQ(Csv(ResultOfAll()),
            R"(Step,Class,Action,Switch,Guid,Port,FromSwitch,FromGuid,FromPort,ToSwitch,ToGuid,)"
            R"(ToPort,Reason)"
            "\n"
            R"(1,sure,swap,"leaf0.0",0x0000000000000009,3,"mid1.0",0x0000000000000007,1,)"
            R"("mid0.0",0x0000000000000005,1,"Each of the two leads into the group of the )"
            R"(other.")"
            "\n"
            R"(1,sure,swap,"leaf1.0",0x000000000000000b,3,"mid0.0",0x0000000000000005,1,)"
            R"("mid1.0",0x0000000000000007,1,"Each of the two leads into the group of the )"
            R"(other.")"
            "\n"
            R"(2,likely,move,"leaf0.0",0x0000000000000009,4,"mid1.1",0x0000000000000008,5,)"
            R"("mid0.1",0x0000000000000006,1,"mid1.1 has a cable too many to leaf0.0, mid0.1 )"
            R"(one too few.")"
            "\n"
            R"(3,sure,connect,"leaf0.1",0x000000000000000a,4,,,,"mid0.1",0x0000000000000006,2,)"
            R"("All others of the group have a link here: a cable is missing, or its link is )"
            R"(down.")"
            "\n"
            R"(4,ask,disconnect,"leaf0.1",0x000000000000000a,5,"mid1.1",0x0000000000000008,6,,,)"
            R"(,"The two switches have more cables than the other pairs of their group.")"
            "\n");
}

TEST_F(RepairReportTest, JsonTellsAll) {
  EXPECT_EQ(Json(ResultOfAll()),
            R"({"format":"fabscope-repair","version":1,)"
            R"("tool":"fabscope 0.1.0","input":"net.topo",)"
            R"("fabric":"sha256:d1f4d5ffd5a3dda076105469902d1a5b14db143c06e9bfd45da6dc1e743ea07)"
            R"(c","status":"repairs","message":"","roots":{"method":"inferred","misfits":0,)"
            R"("doubt":""},"ranks":[)"
            "\n"
            R"(["0x0000000000000001","0x0000000000000002","0x0000000000000003",)"
            R"("0x0000000000000004"],)"
            "\n"
            R"(["0x0000000000000005","0x0000000000000006","0x0000000000000007",)"
            R"("0x0000000000000008"],)"
            "\n"
            R"(["0x0000000000000009","0x000000000000000a","0x000000000000000b",)"
            R"("0x000000000000000c"]],"steps":[)"
            "\n"
            R"({"id":1,"action":"swap","class":"sure",)"
            R"("cables":[{"before":[{"guid":"0x0000000000000007","name":"mid1.0","port":1},)"
            R"({"guid":"0x0000000000000009","name":"leaf0.0","port":3}],)"
            R"("after":[{"guid":"0x0000000000000005","name":"mid0.0","port":1},)"
            R"({"guid":"0x0000000000000009","name":"leaf0.0","port":3}]},)"
            R"({"before":[{"guid":"0x0000000000000005","name":"mid0.0","port":1},)"
            R"({"guid":"0x000000000000000b","name":"leaf1.0","port":3}],)"
            R"("after":[{"guid":"0x0000000000000007","name":"mid1.0","port":1},)"
            R"({"guid":"0x000000000000000b","name":"leaf1.0","port":3}]}],"reason":"Each of )"
            R"(the two leads into the group of the other.","cures":[1,2,3,4],)"
            R"("alternatives":[]},)"
            "\n"
            R"({"id":2,"action":"move","class":"likely",)"
            R"("cables":[{"before":[{"guid":"0x0000000000000008","name":"mid1.1","port":5},)"
            R"({"guid":"0x0000000000000009","name":"leaf0.0","port":4}],)"
            R"("after":[{"guid":"0x0000000000000006","name":"mid0.1","port":1},)"
            R"({"guid":"0x0000000000000009","name":"leaf0.0","port":4}]}],"reason":"mid1.1 has )"
            R"(a cable too many to leaf0.0, mid0.1 one too few.","cures":[0,1,3],)"
            R"("alternatives":[]},)"
            "\n"
            R"({"id":3,"action":"connect","class":"sure","cables":[{"before":null,)"
            R"("after":[{"guid":"0x0000000000000006","name":"mid0.1","port":2},)"
            R"({"guid":"0x000000000000000a","name":"leaf0.1","port":4}]}],"reason":"All others )"
            R"(of the group have a link here: a cable is missing, or its link is down.",)"
            R"("cures":[0,1],"alternatives":[]},)"
            "\n"
            R"({"id":4,"action":"disconnect","class":"ask",)"
            R"("cables":[{"before":[{"guid":"0x0000000000000008","name":"mid1.1","port":6},)"
            R"({"guid":"0x000000000000000a","name":"leaf0.1","port":5}],"after":null}],)"
            R"("reason":"The two switches have more cables than the other pairs of their )"
            R"(group.","cures":[1,3],"alternatives":[[{"before":[{"guid":"0x0000000000000008",)"
            R"("name":"mid1.1","port":6},{"guid":"0x000000000000000a","name":"leaf0.1",)"
            R"("port":5}],"after":[{"guid":"0x0000000000000006","name":"mid0.1","port":5},)"
            R"({"guid":"0x000000000000000a","name":"leaf0.1","port":5}]}],)"
            R"([{"before":[{"guid":"0x000000000000000a","name":"leaf0.1","port":5},)"
            R"({"guid":"0x0000000000000008","name":"mid1.1","port":6}],)"
            R"("after":[{"guid":"0x000000000000000c","name":"leaf1.1","port":5},)"
            R"({"guid":"0x0000000000000008","name":"mid1.1","port":6}]}]]}],"lowerBound":3,)"
            R"("after":{"records":0,"issues":0},"notes":[]})"
            "\n");
}

TEST_F(RepairReportTest, JsonOfAFailureHasNoSteps) {
  RepairResult result = ResultOfSwap();
  result.message = "no switch of the fabric has a place in a tree";
  EXPECT_THAT(
      Json(result),
      AllOf(HasSubstr(
                R"("status":"failed","message":"no switch of the fabric has a place in a tree",)"),
            EndsWith("\"steps\":[],\"lowerBound\":0,\"after\":null,\"notes\":[]}\n")));
}

TEST_F(RepairReportTest, JsonTellsNotesAsData) {
  RepairResult result = ResultOfSwap();
  result.proven.plan.notes = {{RepairNote::Kind::DeadSwitch, 1, {tree["leaf1.1"]->index}, {4, 5}}};
  EXPECT_THAT(
      Json(result),
      EndsWith(R"("notes":[
{"kind":"dead-switch","rank":1,"switches":["0x000000000000000c"],"ports":[4,5],)"
               R"("text":"a switch is dead or missing: ports 4 and 5 of leaf1.1 are empty, )"
               R"(where their siblings use them"}]})"
               "\n"));
}

TEST_F(RepairReportTest, TheResultOfACheckHasTheSameSteps) {
  RepairResult repair = ResultOfAll();
  const std::string plan = Json(repair);
  const std::string steps = plan.substr(plan.find(R"("steps":)") + 8);
  CheckResult check;
  check.status = CheckStatus::Done;
  check.topology = std::move(repair.before.topology);
  check.findings = std::move(repair.before.findings);
  check.repairs = std::make_unique<ProvenPlan>(std::move(repair.proven));
  std::ostringstream stream;
  WriteJsonReport(check, {}, stream);
  const std::string json = stream.str();
  const std::string repairs = json.substr(json.find(R"("repairs":)") + 10);
  EXPECT_EQ(repairs.substr(0, repairs.find(R"(,"report")")),
            steps.substr(0, steps.find(R"(,"lowerBound")")));
}

// A switch has the name of another one.
class SharedNamesTest : public RepairTest {};

TEST_F(SharedNamesTest, AreToldApartByTheGuid) {
  tree.Switch("root").SwitchOfGuid(0xab, "leaf");
  NodeSpec twin;
  twin.guid = 0xcd;
  twin.name = "other";
  twin.displayName = "leaf";
  twin.numPorts = 4;
  tree.Node(twin);
  const SwitchNames names(tree.Build(), 0);
  EXPECT_EQ(names.Of(*tree["root"], 3), "root port 3");
  EXPECT_EQ(names.Of(*tree["leaf"], 3), "leaf (0x00000000000000ab) port 3");
  EXPECT_EQ(names.Of(*tree["other"]), "leaf (0x00000000000000cd)");
}

TEST_F(SharedNamesTest, NeedNoGuidWhereItIsShown) {
  tree.SwitchOfGuid(0xab, "leaf");
  const SwitchNames names(tree.Build(), 2);
  EXPECT_EQ(names.Of(*tree["leaf"], 3), "0x00000000000000ab -- leaf port 3");
}

}  // namespace
}  // namespace fabscope::internal
