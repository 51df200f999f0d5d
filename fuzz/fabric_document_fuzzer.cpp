// Any bytes at all are a fabric document or an error with its place. What was read, written and
// read again is the same document, blanks between its parts do not matter, and no beginning of a
// document is one.

#include <cstdint>
#include <simdjson.h>

#include "fuzz/loading.h"
#include "fuzz/require.h"

namespace {

using namespace fabscope::internal::fuzz;

std::string WithoutBlanks(const std::string& json) {
  std::string small(json.size(), '\0');
  std::size_t size = 0;
  Require(simdjson::minify(json.data(), json.size(), small.data(), size) == simdjson::SUCCESS,
          "what was read as a document is JSON");
  small.resize(size);
  return small;
}

// Cut before the last brace, at a place that the bytes decide.
void RequireNothingOfACutOne(const std::string& json) {
  const std::size_t end = json.rfind('}');
  std::size_t place = 0;
  for (const char c : json) place = place * 31 + static_cast<unsigned char>(c);
  const std::string cut = json.substr(0, place % (end + 1));
  const Loaded loaded = LoadDocument(cut);
  Require(!loaded.error.empty(), "a document that was cut is an error");
  RequirePlaceIn(cut, loaded.line, loaded.column);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string json(reinterpret_cast<const char*>(data), size);
  const Loaded loaded = LoadDocument(json);
  if (!loaded.error.empty()) {
    RequirePlaceIn(json, loaded.line, loaded.column);
    return 0;
  }
  // Texts that were too long have been cut, which is all that documents are warned of.
  Loaded written = loaded;
  written.warnings.clear();
  RequireSame(LoadDocument(loaded.document), written, "a document is read as it was written");
  Loaded small = LoadDocument(WithoutBlanks(json));
  Require(small.warnings.size() == loaded.warnings.size(), "blanks change no warning but its line");
  small.warnings.clear();
  RequireSame(small, written, "blanks change nothing");
  RequireNothingOfACutOne(json);
  return 0;
}
