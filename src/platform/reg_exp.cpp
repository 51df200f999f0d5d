#include "platform/reg_exp.h"

#include <array>
#include <new>
#include <utility>

#include "platform/reg_exp_limits.h"

namespace fabscope {

regExp::regExp(std::string expression) : expression_(std::move(expression)) {
  error_ = ProblemOfRegExp(expression_);
  if (!IsValid()) return;
  const int status = regcomp(&compiled_, expression_.c_str(), REG_EXTENDED | REG_NOSUB);
  if (status == 0) return;
  if (status == REG_ESPACE) throw std::bad_alloc();
  std::array<char, 256> text{};
  regerror(status, &compiled_, text.data(), text.size());
  error_ = text.data();
}

regExp::~regExp() {
  if (IsValid()) regfree(&compiled_);
}

bool regExp::Matches(const std::string& text) const {
  if (!IsValid()) return false;
  const int status = regexec(&compiled_, text.c_str(), 0, nullptr, 0);
  if (status == REG_ESPACE) throw std::bad_alloc();
  return status == 0;
}

}  // namespace fabscope
