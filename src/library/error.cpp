#include <fabscope/error.h>
#include <utility>

#include "library/access.h"

namespace fabscope {

Error::Error(const std::string& text, std::string file, std::size_t line, std::size_t column,
             std::string reason)
    : std::runtime_error(text),
      file_(std::move(file)),
      line_(line),
      column_(column),
      reason_(std::move(reason)) {}

Error::Error(const Error& other) = default;
Error& Error::operator=(const Error& other) = default;
Error::~Error() = default;

namespace internal {

void ThrowInputError(const InputError& error) {
  throw Error(error.Text(), error.file, error.line, error.column, error.message);
}

void ThrowOptionError(const std::string& reason) { throw Error(reason, {}, 0, 0, reason); }

std::shared_ptr<regExp> CompiledRegex(const std::string& expression) {
  auto regex = std::make_shared<regExp>(expression);
  if (!regex->IsValid()) {
    ThrowOptionError("expected a POSIX extended regular expression: " + regex->GetError());
  }
  return regex;
}

}  // namespace internal
}  // namespace fabscope
