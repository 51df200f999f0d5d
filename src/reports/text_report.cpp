#include "reports/text_report.h"

namespace fabscope {

void WriteTextReport(const CheckResult& result, bool withDump, std::ostream& stream) {
  stream << result.buildOutput << result.levelsReport << result.validateOutput;
  if (!result.records.empty()) stream << '\n';
  for (const auto& record : result.records) {
    const bool isWarning = record->GetLevel() == EN_FABRIC_ERR_WARNING;
    stream << (isWarning ? "-W- " : "-E- ") << record->GetErrorLine() << '\n';
  }
  if (result.status != CheckStatus::Done) return;
  if (withDump) stream << result.dump;
  stream << "\n-I- Fat-tree check: " << result.records.size() << " error records, "
         << result.issuesCount << " issues\n";
}

}  // namespace fabscope
