// Any bytes at all are a fabric document or an error with its place; and what was read, written and
// read again is the same document.

#include <cstdlib>

#include "formats/fabric_document.h"

namespace {

fabscope::MaybeError Load(const std::string& bytes, std::string& written) {
  using namespace fabscope;
  InputText input{"fuzz", bytes};
  input.bytes.reserve(bytes.size() + 64);
  FabricBuilder builder;
  MaybeError error = LoadFabricDocument(input, nullptr, builder);
  if (!error) written = FabricDocumentText(*builder.Build());
  return error;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string written;
  const auto error = Load(std::string(reinterpret_cast<const char*>(data), size), written);
  if (error) {
    if (error->line == 0 || error->column == 0) std::abort();
    return 0;
  }
  std::string again;
  if (Load(written, again) || again != written) std::abort();
  return 0;
}
