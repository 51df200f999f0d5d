#include "platform/reg_exp.h"

#include <array>
#include <utility>

namespace fabscope {

regExp::regExp(std::string expression) : expression_(std::move(expression)) {
  const int status = regcomp(&compiled_, expression_.c_str(), REG_EXTENDED);
  if (status == 0) return;
  std::array<char, 256> text{};
  regerror(status, &compiled_, text.data(), text.size());
  error_ = text.data();
}

regExp::~regExp() {
  if (IsValid()) regfree(&compiled_);
}

bool regExp::Matches(const std::string& text) const {
  if (!IsValid()) return false;
  return regexec(&compiled_, text.c_str(), 0, nullptr, 0) == 0;
}

}  // namespace fabscope
