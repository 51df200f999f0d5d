// Any bytes at all are a topology dump or an error with its place. How the lines end and what
// stands in front of them does not matter, and what was read and written is read as the same
// fabric.

#include <cstdint>
#include <sstream>

#include "formats/write_fabric.h"
#include "fuzz/loading.h"
#include "fuzz/require.h"
#include "text/utf8.h"

namespace {

using namespace fabscope::internal;
using namespace fabscope::internal::fuzz;

void RequireOneReadingOfPlainLines(const std::string& text, const Loaded& expected) {
  RequireSame(LoadDumpClosely(text), expected, "a dump is read fast as it is read closely");
}

void RequireOneReadingOfLineEnds(const std::string& text, const Loaded& expected) {
  if (text.find('\r') != std::string::npos) return;
  RequireSame(LoadDump(Replaced(text, "\n", "\r\n")), expected,
              "a carriage return before a line's end changes nothing");
}

// In a document a character of three bytes stands for a byte that is not UTF-8, with which a name
// can become too long.
void RequireSameAsDocument(const Loaded& loaded, bool isUtf8) {
  std::string document = loaded.document;
  if (!isUtf8) document = LoadDocument(document).document;
  RequireSame(LoadDocument(document).document, document,
              "a dump is written as a document that says the same");
}

void RequireSameWhenWritten(const Loaded& loaded, bool isUtf8) {
  RequireSameAsDocument(loaded, isUtf8);
  for (const std::string& loss : LossesOf(*loaded.fabric, FabricFormat::TopologyDump)) {
    Require(loss.ends_with("not-symmetric flag"), "a dump can hold what a dump has told");
  }
  std::ostringstream written;
  WriteFabric(*loaded.fabric, FabricFormat::TopologyDump, written);
  Loaded expected;
  expected.document = Replaced(loaded.document, ",\"symmetric\":false", "");
  RequireSame(LoadDump(written.str()), expected, "a dump is read as it was written");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const Loaded loaded = LoadDump(text);
  if (!loaded.error.empty()) RequirePlaceIn(text, loaded.line, loaded.column);
  RequireOneReadingOfPlainLines(text, loaded);
  RequireOneReadingOfLineEnds(text, loaded);
  if (loaded.error.empty()) RequireSameWhenWritten(loaded, FirstInvalidUtf8(text) == text.size());
  return 0;
}
