#include "reports/csv_report.h"

namespace fabscope {

void WriteCsvReport(const CheckResult& result, std::ostream& stream) {
  stream << "Scope,NodeId,PortId,PortNumber,Event,Description\n";
  for (const auto& record : result.records) stream << record->GetCSVErrorLine() << '\n';
}

}  // namespace fabscope
