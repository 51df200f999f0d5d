// What is different between two fabrics that were the same fat tree once. Nothing differs from
// itself, the other way round nothing but the direction changes, and the report and the JSON of it
// tell the same.

#include <algorithm>
#include <memory>
#include <simdjson.h>
#include <sstream>
#include <string>

#include "compare/difference.h"
#include "fat_tree/topology.h"
#include "fuzz/fabric_parts.h"
#include "fuzz/require.h"
#include "platform/reg_exp.h"
#include "reports/difference_report.h"

namespace {

using namespace fabscope::internal;
using namespace fabscope::internal::fuzz;

// Few names, so that some are shared and some are those of other nodes.
std::string Name(FuzzedDataProvider& bytes) {
  const auto number = bytes.ConsumeIntegralInRange(0, 60);
  return (number % 7 == 0 ? "n\xff" : "spine") + std::to_string(number);
}

struct Checked {
  std::unique_ptr<IBFabric> fabric;
  std::ostringstream output;
  std::unique_ptr<FTTopology> topology;
  FindingList findings;
  bool isDone = false;

  Checked(const FabricParts& parts, bool isAutomatic) : fabric(BuildFabric(parts)) {
    topology = std::make_unique<FTTopology>(fabric.get(), &output, 70);
    topology->SetFindingSink([this](Finding&& finding) { findings.Add(std::move(finding)); });
    std::vector<FabricErrGeneral*> records;
    std::string message;
    const int status =
        isAutomatic ? topology->Build(records, message, 5, 1) : topology->Build(records, message);
    isDone = status == 0 && topology->Validate(records, message) == 0;
  }
};

Difference Compare(const Checked& was, const Checked& is) {
  const Counterparts nodes(*was.fabric, *is.fabric);
  Difference difference{"was",
                        "is",
                        0,
                        *was.fabric,
                        *is.fabric,
                        CompareFabrics(*was.fabric, *is.fabric, nodes),
                        std::nullopt,
                        was.isDone && is.isDone ? "" : "no tree"};
  if (difference.message.empty()) {
    difference.findings =
        CompareFindings({*was.topology, was.findings}, {*is.topology, is.findings}, nodes);
  }
  return difference;
}

std::size_t CountChanges(const Difference& difference) {
  const FabricChanges& fabric = difference.fabric;
  std::size_t count = fabric.nodesWent.size() + fabric.nodesCame.size() + fabric.replaced.size() +
                      fabric.renamed.size() + fabric.moved.size() + fabric.cablesWent.size() +
                      fabric.cablesCame.size() + fabric.speeds.size();
  if (difference.findings) {
    count += difference.findings->cured.size() + difference.findings->appeared.size();
  }
  return count;
}

void RequireSoundReports(const Difference& difference) {
  std::ostringstream text;
  WriteDifferenceReport(difference, {}, text);
  const std::string lines = text.str();
  const auto count = static_cast<std::size_t>(std::count(lines.begin(), lines.end(), '\n'));
  const std::size_t changes = CountChanges(difference);
  Require(count == (changes == 0 ? 0 : changes + 1), "every change is a line, and there is a sum");
  Require(difference.IsEmpty() == (changes == 0), "what has changes is not empty");
  std::ostringstream json;
  WriteDifferenceJson(difference, json);
  const simdjson::padded_string padded(json.str());
  simdjson::dom::parser parser;
  Require(parser.parse(padded).error() == simdjson::SUCCESS, "the JSON of a difference is JSON");
}

void RequireMirrored(const Difference& there, const Difference& back) {
  Require(there.fabric.nodesWent.size() == back.fabric.nodesCame.size() &&
              there.fabric.nodesCame.size() == back.fabric.nodesWent.size() &&
              there.fabric.replaced.size() == back.fabric.replaced.size() &&
              there.fabric.renamed.size() == back.fabric.renamed.size() &&
              there.fabric.speeds.size() == back.fabric.speeds.size(),
          "the other way round nodes come that went, and the rest is the same");
  if (!there.findings || !back.findings) return;
  Require(there.findings->cured.size() == back.findings->appeared.size() &&
              there.findings->appeared.size() == back.findings->cured.size(),
          "the other way round findings appear that were cured");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  // The tree comes from the last bytes, and what is changed of it from those before.
  const std::size_t fewer = std::min<std::size_t>(data[0], size - 1);
  const bool isAutomatic = data[size / 2] % 2 == 0;
  FuzzedDataProvider whole(data, size);
  FuzzedDataProvider part(data + fewer, size - fewer);
  const Checked is(MakeTree(whole, Name), isAutomatic);
  const Checked was(MakeTree(part, Name), isAutomatic);
  const Difference there = Compare(was, is);
  RequireSoundReports(there);
  RequireMirrored(there, Compare(is, was));
  Require(Compare(is, is).IsEmpty(), "nothing differs from itself");
  return 0;
}
