#include "platform/reg_exp.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <new>
#include <utility>

#include "platform/reg_exp_size.h"

namespace fabscope::internal {
namespace {

// What the C library can take with a stack of 1 MB (see reg_exp_size.h). What people write has less
// than a tenth of this, but for lists of names, whose length alone is no trouble.
constexpr std::ptrdiff_t mostGroups = 5000;
constexpr std::int64_t mostDepth = 1000;
constexpr std::int64_t mostEmpty = 2000;
constexpr std::int64_t mostRepeated = 10000;

// Why an expression is refused; empty when it is not.
std::string Excess(const std::string& expression) {
  if (std::count(expression.begin(), expression.end(), '(') > mostGroups) {
    return "it has more than " + std::to_string(mostGroups) + " groups";
  }
  const RegExpSize size = SizeOf(expression);
  if (size.depth > mostDepth) {
    return "it has more than " + std::to_string(mostDepth) + " groups inside each other";
  }
  if (size.parts > static_cast<std::int64_t>(expression.size()) + mostRepeated) {
    return "its repetitions stand for more than " + std::to_string(mostRepeated) + " characters";
  }
  if (size.empty > mostEmpty) {
    return "it has more than " + std::to_string(mostEmpty) + " parts in a row that may be empty";
  }
  return "";
}

}  // namespace

regExp::regExp(std::string expression)
    : expression_(std::move(expression)),
      isText_(expression_.find_first_of(R"(\^$.[]|()*+?{})") == std::string::npos) {
  error_ = Excess(expression_);
  if (!error_.empty()) return;
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

bool regExp::Matches(std::string_view text) const {
  if (!IsValid()) return false;
  // Of every host it is asked whether it is special, mostly by two words.
  if (isText_) return text.find(expression_) != std::string_view::npos;
  regmatch_t part{0, static_cast<regoff_t>(text.size())};
  const int status = regexec(&compiled_, text.data(), 0, &part, REG_STARTEND);
  // "No match" would make a tree of the wrong roots.
  if (status == REG_ESPACE) throw std::bad_alloc();
  return status == 0;
}

}  // namespace fabscope::internal
