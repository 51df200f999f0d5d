#include "platform/reg_exp.h"

#include <algorithm>
#include <array>
#include <new>
#include <utility>

namespace fabscope {
namespace {

// The C library calls itself for every group inside a group, and some ten thousand calls end the
// process. What stands side by side counts as well, which keeps this simple.
constexpr std::ptrdiff_t mostGroups = 5000;

}  // namespace

regExp::regExp(std::string expression) : expression_(std::move(expression)) {
  if (std::count(expression_.begin(), expression_.end(), '(') > mostGroups) {
    error_ = "it has more than " + std::to_string(mostGroups) + " groups";
    return;
  }
  const int status = regcomp(&compiled_, expression_.c_str(), REG_EXTENDED);
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
  // "No match" would make a tree of the wrong roots.
  if (status == REG_ESPACE) throw std::bad_alloc();
  return status == 0;
}

}  // namespace fabscope
