#pragma once

#include <regex.h>
#include <string>
#include <string_view>

namespace fabscope::internal {

// A compiled POSIX extended regular expression together with its source text.
//
// It is matched byte for byte ("C" locale), as the tools that administrators write such
// expressions for do: a name that is not valid UTF-8 is matched like any other. Where memory runs
// out, compiling and matching throw std::bad_alloc.
class regExp {
 public:
  explicit regExp(std::string expression);
  ~regExp();
  regExp(const regExp&) = delete;
  regExp& operator=(const regExp&) = delete;

  // False when the expression did not compile, or is so large or nested that the C library could
  // need more stack than there is; GetError() then says why, and Matches() is false.
  bool IsValid() const { return error_.empty(); }
  const std::string& GetError() const { return error_; }
  const std::string& GetExpression() const { return expression_; }

  // True when the expression matches somewhere in `text` (no anchoring of its own).
  bool Matches(std::string_view text) const;

 private:
  std::string expression_;
  std::string error_;
  regex_t compiled_{};
  bool isText_;  // it has no operators
};

}  // namespace fabscope::internal
