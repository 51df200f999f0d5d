#include <fabscope/reports.h>
#include <ostream>

#include "formats/write_fabric.h"
#include "library/access.h"
#include "reports/csv_report.h"
#include "reports/html_report.h"
#include "reports/json_report.h"
#include "reports/svg_report.h"
#include "reports/text_report.h"

namespace fabscope {
namespace {

using internal::Access;
using internal::CheckStatus;
using internal::FabricFormat;

FabricFormat InnerFormat(Format format) {
  switch (format) {
    case Format::Document:
      return FabricFormat::Document;
    case Format::TopologyDump:
      return FabricFormat::TopologyDump;
    case Format::NetFile:
      return FabricFormat::NetFile;
    case Format::Dot:
      return FabricFormat::Dot;
    case Format::GraphMl:
      return FabricFormat::GraphMl;
  }
  internal::ThrowOptionError("expected one of Format");
}

}  // namespace

void WriteText(const CheckResult& result, std::ostream& stream, bool quiet) {
  internal::TextStyle style;
  style.quiet = quiet;
  WriteTextReport(Access::ResultOf(result), style, stream);
}

void WriteCsv(const CheckResult& result, std::ostream& stream) {
  WriteCsvReport(Access::ResultOf(result), stream);
}

void WriteJson(const CheckResult& result, std::ostream& stream) {
  WriteJsonReport(Access::ResultOf(result), {}, stream);
}

void WriteHtml(const CheckResult& result, std::ostream& stream) {
  WriteHtmlReport(Access::ResultOf(result), stream);
}

void WriteSvg(const CheckResult& result, std::ostream& stream) {
  if (Access::ResultOf(result).status == CheckStatus::NotBuilt) return;
  WriteSvgReport(Access::ResultOf(result), stream);
}

void WriteFabric(const Fabric& fabric, Format format, std::ostream& stream) {
  internal::WriteFabric(*Access::InputOf(fabric)->fabric, InnerFormat(format), stream);
}

}  // namespace fabscope
