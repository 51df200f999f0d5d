#include "reports/csv_report.h"

#include <string>

#include "fat_tree/link_errors.h"
#include "reports/text_report.h"

namespace fabscope::internal {

void WriteCsvReport(const CheckResult& result, std::ostream& stream) {
  stream << "Scope,NodeId,PortId,PortNumber,Event,Description\n";
  std::string description;
  for (const Finding& record : result.findings.Records()) {
    description.clear();
    AppendDescriptionOf(record, result.showGuid, description);
    stream << EventCsvLine(EventOf(record), description) << '\n';
  }
  const std::string rest = RecordsNotListedText(result);
  if (!rest.empty()) stream << EventCsvLine("NOT_LISTED", rest) << '\n';
}

}  // namespace fabscope::internal
