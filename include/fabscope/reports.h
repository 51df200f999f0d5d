#pragma once

#include <fabscope/check.h>
#include <fabscope/export.h>
#include <fabscope/fabric.h>
#include <iosfwd>

namespace fabscope {

// Each writes what the command writes, byte for byte. A stream that fails has its state set, and
// throws only if it was told to.

/// The report as text; `quiet` leaves out the lines that start with "-I- ". If the check is not
/// complete, the report ends where the check did; CheckResult::Message has the reason.
FABSCOPE_API void WriteText(const CheckResult& result, std::ostream& stream, bool quiet = false);
/// The error records: a header line, then a line each.
FABSCOPE_API void WriteCsv(const CheckResult& result, std::ostream& stream);
/// The whole result.
FABSCOPE_API void WriteJson(const CheckResult& result, std::ostream& stream);
/// The page.
FABSCOPE_API void WriteHtml(const CheckResult& result, std::ostream& stream);
/// A picture of the tree; nothing if none was built.
FABSCOPE_API void WriteSvg(const CheckResult& result, std::ostream& stream);

/// What `fabscope convert` writes of a fabric alone.
enum class Format {
  Document,      ///< the fabric document: all there is
  TopologyDump,  ///< what ibnetdiscover prints
  NetFile,       ///< what the fabric simulator ibsim reads
  Dot,           ///< Graphviz
  GraphMl,
};
/// Tells nothing of what the format cannot hold.
FABSCOPE_API void WriteFabric(const Fabric& fabric, Format format, std::ostream& stream);

}  // namespace fabscope
