#include "compare/repair_document.h"

#include <gmock/gmock.h>

#include "support/input_fixture.h"

namespace fabscope::internal {
namespace {

using ::testing::ElementsAre;

// A plan of one step; what stands in the place of the step can be given.
std::string Plan(const std::string& steps, const std::string& status = "repairs") {
  return R"({"format":"fabscope-repair","version":1,"fabric":"sha256:00","status":")" + status +
         R"(","ranks":[["0x1","0x2"],["0x3"]],"steps":[)" + steps + "]}";
}

std::string End(const std::string& guid, const std::string& port) {
  return R"({"guid":")" + guid + R"(","port":)" + port + "}";
}

std::string Cable(const std::string& port) {
  return "[" + End("0x1", port) + "," + End("0x3", "7") + "]";
}

std::string Step(const std::string& id, const std::string& action, const std::string& cables) {
  return R"({"id":)" + id + R"(,"action":")" + action + R"(","class":"sure","cables":[)" + cables +
         "]}";
}

std::string Change(const std::string& before, const std::string& after) {
  return R"({"before":)" + before + R"(,"after":)" + after + "}";
}

const std::string move = Change(Cable("1"), Cable("2"));

class RepairDocumentTest : public InputTest {
 protected:
  // Without the name of the file; empty when it was read.
  std::string ErrorOf(const std::string& text) {
    Write(text);
    plan = {};
    const MaybeError error = LoadRepairDocument(path, plan);
    return error ? error->Text().substr(path.size() + 1) : "";
  }
  // What is wrong with the steps, without its place.
  std::string ProblemOf(const std::string& steps) {
    const std::string error = ErrorOf(Plan(steps));
    const std::size_t at = error.find(": ");
    return at == std::string::npos ? error : error.substr(at + 2);
  }

  RepairDocument plan;
};

TEST_F(RepairDocumentTest, IsReadWhole) {
  const std::string step = R"({"id":4,"action":"move","class":"ask","cables":[)" + move +
                           R"(],"reason":"why","cures":[1],"alternatives":[[)" +
                           Change("null", Cable("3")) + "]]}";
  ASSERT_EQ(ErrorOf(Plan(step)), "");
  EXPECT_EQ(plan.file, path);
  EXPECT_EQ(plan.fabric, "sha256:00");
  EXPECT_EQ(plan.status, "repairs");
  EXPECT_THAT(plan.switches, ElementsAre(1, 2, 3));
  ASSERT_EQ(plan.steps.size(), 1U);
  const KeptStep& read = plan.steps.front();
  EXPECT_EQ(read.id, 4U);
  EXPECT_EQ(read.action, RepairAction::Move);
  EXPECT_EQ(read.trust, RepairClass::Ask);
  ASSERT_EQ(read.cables.size(), 1U);
  EXPECT_EQ(read.cables[0].before, (KeptCable{{{1, 1, ""}, {3, 7, ""}}}));
  EXPECT_EQ(read.cables[0].after, (KeptCable{{{1, 2, ""}, {3, 7, ""}}}));
  ASSERT_EQ(read.alternatives.size(), 1U);
  EXPECT_EQ(read.alternatives[0][0].before, std::nullopt);
}

TEST_F(RepairDocumentTest, MustBeAPlan) {
  EXPECT_EQ(ErrorOf(R"({"format":"fabscope-result"})"),
            "1:11: not a plan of repairs, expected \"fabscope-repair\"");
  EXPECT_EQ(ErrorOf(R"({"format":"fabscope-repair","version":2})"),
            "1:39: unknown version of the format, expected 1");
  EXPECT_EQ(ErrorOf(R"({"format":"fabscope-repair","version":1})"),
            "1:1: the document has no \"fabric\"");
  EXPECT_EQ(ErrorOf("{\"format\":\"fabscope-repair\",\n\"vrsion\":1}"),
            "2:1: unknown key \"vrsion\" in the document, expected one of format, version, fabric, "
            "status, ranks, steps, tool, input, message, roots, lowerBound, after, notes");
  EXPECT_EQ(ErrorOf(Plan("", "good")).substr(6),
            R"(expected "clean", "repairs", "abstained" or "failed")");
}

TEST_F(RepairDocumentTest, WhatIsNoDocumentIsRefused) {
  EXPECT_EQ(ErrorOf("[]"), "1:1: expected an object: the document");
  EXPECT_EQ(ErrorOf("\n  7"), "2:3: expected an object: the document");
  EXPECT_NE(ErrorOf(""), "");
  EXPECT_EQ(ErrorOf(Plan("") + "{}"),
            "1:124: malformed JSON: something stands behind the document");
  const std::string whole = Plan(Step("1", "move", move));
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_NE(ErrorOf(whole.substr(0, size)), "") << size;
  }
}

TEST_F(RepairDocumentTest, WhatIsForPeopleMustBeWellFormed) {
  const auto problem = [&](const std::string& notes) {
    const std::string start = Plan("");
    return ErrorOf(start.substr(0, start.size() - 1) + ",\n\"notes\":" + notes + "}");
  };
  EXPECT_EQ(problem(R"([{"a":[1,-2.5,"x",true,null]},{}])"), "");
  EXPECT_EQ(problem("[tru]"), "2:10: expected true or false");
  EXPECT_EQ(problem("[nul]"), "2:10: expected null");
  EXPECT_EQ(problem("[1x]"), "2:10: expected a number");
  EXPECT_EQ(problem(std::string(65, '[') + std::string(65, ']')), "2:73: nested too deeply");
  EXPECT_NE(problem("[1,,2]"), "");
  EXPECT_NE(problem(R"({"a"})"), "");
}

TEST_F(RepairDocumentTest, NumbersOutOfRangeAreRefused) {
  for (const char* port : {"0", "256", "-1", "1.5", "99999999999999999999999", "\"1\"", "null"}) {
    const std::string change = Change(Cable(port), Cable("2"));
    EXPECT_EQ(ProblemOf(Step("1", "move", change)), "expected a whole number from 1 to 255")
        << port;
  }
  EXPECT_EQ(ProblemOf(Step("0", "move", move)), "expected a whole number from 1 to 4294967295");
  EXPECT_EQ(ProblemOf(Step("4294967296", "move", move)),
            "expected a whole number from 1 to 4294967295");
}

TEST_F(RepairDocumentTest, GuidsAndNamesAreLookedAt) {
  const std::string noGuid = "[" + End("1", "1") + "," + End("0x3", "7") + "]";
  EXPECT_EQ(ProblemOf(Step("1", "move", Change(noGuid, Cable("2")))),
            "not a GUID, expected \"0x\" and 1 to 16 hexadecimal digits");
  const std::string longName = R"([{"guid":"0x1","port":1,"name":")" +
                               std::string(std::size_t{10} << 20U, 'x') + R"("},)" +
                               End("0x3", "7") + "]";
  EXPECT_EQ(ProblemOf(Step("1", "move", Change(longName, Cable("2")))),
            "the name is longer than 4096 bytes");
}

TEST_F(RepairDocumentTest, ACableHasTwoEnds) {
  const std::string three =
      "[" + End("0x1", "1") + "," + End("0x3", "7") + "," + End("0x3", "8") + "]";
  for (const std::string& ends : {std::string("[]"), "[" + End("0x1", "1") + "]", three}) {
    EXPECT_EQ(ProblemOf(Step("1", "move", Change(ends, Cable("2")))),
              "expected the two ends of a cable");
  }
  const std::string loop = "[" + End("0x1", "1") + "," + End("0x1", "1") + "]";
  EXPECT_EQ(ProblemOf(Step("1", "move", Change(loop, Cable("2")))),
            "the cable leads to its own port");
  EXPECT_EQ(ProblemOf(Step("1", "move", "7")), "expected an object: a cable");
  EXPECT_EQ(ProblemOf(Step("1", "move", Change("[7,7]", Cable("2")))),
            "expected an object: an end");
  EXPECT_EQ(ProblemOf(Step("1", "move", Change("7", Cable("2")))), "expected an array");
}

TEST_F(RepairDocumentTest, AStepChangesWhatItSays) {
  EXPECT_EQ(ProblemOf(Step("1", "swap", move)),
            "step 1 is not a swap: a swap changes two cables, the others one, a connect has none "
            "before, a disconnect none after");
  EXPECT_EQ(ProblemOf(Step("7", "connect", move)),
            "step 7 is not a connect: a swap changes two cables, the others one, a connect has "
            "none before, a disconnect none after");
  using ::testing::StartsWith;
  EXPECT_THAT(ProblemOf(Step("1", "disconnect", move)), StartsWith("step 1 is not a disconnect: "));
  EXPECT_THAT(ProblemOf(Step("1", "move", move + "," + move)),
              StartsWith("step 1 is not a move: "));
  EXPECT_THAT(ProblemOf(Step("1", "move", Change("null", Cable("2")))),
              StartsWith("step 1 is not a move: "));
  EXPECT_EQ(ProblemOf(Step("1", "move", "")), "expected the cables that change");
  EXPECT_EQ(ProblemOf(Step("1", "move", Change(Cable("1"), Cable("1")))),
            "the cable is the same before and after");
  EXPECT_EQ(ProblemOf(Step("1", "move", Change("null", "null"))),
            "the cable is the same before and after");
  EXPECT_EQ(ProblemOf(Step("1", "push", move)),
            R"(expected "swap", "move", "connect" or "disconnect")");
  EXPECT_EQ(ProblemOf(R"({"id":1,"action":"move","class":"maybe","cables":[]})"),
            R"(expected "sure", "likely" or "ask")");
  EXPECT_EQ(ProblemOf(R"({"id":1,"action":"move","class":"sure"})"), "a step has no \"cables\"");
}

TEST_F(RepairDocumentTest, StepsAreNumberedUpwardsAndNoneTwice) {
  const std::string other = Change(Cable("1"), Cable("3"));
  EXPECT_EQ(ProblemOf(Step("2", "move", move) + "," + Step("7", "move", other)), "");
  EXPECT_EQ(ProblemOf(Step("2", "move", move) + "," + Step("2", "move", other)),
            "step 2 does not follow step 2: ids must rise");
  EXPECT_EQ(ProblemOf(Step("2", "move", move) + "," + Step("3", "move", move)),
            "step 3 repeats step 2");
}

}  // namespace
}  // namespace fabscope::internal
