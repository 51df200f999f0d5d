#include "formats/input_text.h"

namespace fabscope::internal {
namespace {

// simdjson asks for this many readable bytes behind a document.
constexpr std::size_t parserRoom = 64;

}  // namespace

MaybeError ReadAll(Input& input, InputText& text) {
  text = {input.GetFile(), input.TakeRest(parserRoom)};
  const auto& failure = input.GetFailure();
  if (!failure) return std::nullopt;
  if (!failure->hasPlace) return InputError{text.file, 0, 0, failure->message};
  return text.ErrorAt(text.bytes.size(), failure->message);
}

}  // namespace fabscope::internal
