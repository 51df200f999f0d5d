#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "check/check.h"
#include "support/stage_fixture.h"

namespace fabscope::internal {

// Reports of a check from roots that the test names.
class ReportTest : public StageTest {
 protected:
  const CheckResult& Check(const std::string& rootRegex) {
    result.input = "net.topo";
    result.findings = FindingList(mostRecords);
    result.topology = std::make_unique<FTTopology>(&fabric.Build(), &out, mergePercent);
    result.topology->SetFindingSink(
        [this](Finding&& finding) { result.findings.Add(std::move(finding)); });
    regExp regex(rootRegex);
    result.status = CheckStatus::NotBuilt;
    if (result.topology->Build(errors, result.message, regex) == 0) {
      result.levelsReport = result.topology->LevelsReport();
      const int status = result.topology->Validate(errors, result.message);
      result.status = status == 0 ? CheckStatus::Done : CheckStatus::NotValidated;
    }
    result.issuesCount = result.topology->GetIssuesCount();
    return result;
  }

  std::uint64_t mostRecords = FindingList::defaultMostRecords;
  CheckResult result;
};

}  // namespace fabscope::internal
