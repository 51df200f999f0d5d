// How costly is a regular expression?
//
// The C library writes out every counted repetition before it matches anything: "(a{9}){9}" is 81
// letters to it, and "a+" is "aa*". What it then needs grows with the number of letters and, much
// faster, with that of the parts that may be repeated or left out. It also calls itself for every
// group inside a group. All three are counted here in one walk over the expression; one that names
// a hundred switches, each with its own pattern, stays far below the limits.
//
// Back-references ("(a*)\1") are refused: POSIX gives extended expressions none, and the library,
// which has them, tries all ways to match one, of which there are more than can ever be tried.
//
// What is malformed is left to the library to complain about.

#include "platform/reg_exp_limits.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace fabscope {
namespace {

constexpr std::size_t mostNested = 200;
constexpr std::uint64_t mostLetters = 200'000;
constexpr std::uint64_t mostRepetitions = 2'000;

// What a part of an expression is once written out. Sums and products stay small enough for their
// type: each is cut to `most`.
struct Size {
  std::uint64_t letters = 0;
  std::uint64_t repetitions = 0;

  static constexpr std::uint64_t most = std::uint64_t{1} << 30U;
  void Add(const Size& other) {
    letters = std::min(most, letters + other.letters);
    repetitions = std::min(most, repetitions + other.repetitions);
  }
  void Repeat(std::uint64_t times) {
    letters = std::min(most, letters * times);
    repetitions = std::min(most, repetitions * times);
  }
};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

class RegExpWalk {
 public:
  explicit RegExpWalk(std::string_view expression) : text_(expression) {}

  std::string Problem() {
    groups_.emplace_back();
    while (at_ < text_.size()) {
      if (!Step()) return "back-references are no part of them";
      if (groups_.size() > mostNested) return TooLarge();
    }
    while (groups_.size() > 1) CloseGroup();
    EndPart();
    const Size& whole = groups_.front();
    const bool isSmall = whole.letters <= mostLetters && whole.repetitions <= mostRepetitions;
    return isSmall ? std::string() : TooLarge();
  }

 private:
  static std::string TooLarge() {
    return "it is too large, allowed are " + std::to_string(mostNested) +
           " groups inside each other, " + std::to_string(mostRepetitions) + " repetitions and " +
           std::to_string(mostLetters) + " letters, with all repetitions written out";
  }

  // False at a back-reference.
  bool Step() {
    const char c = text_[at_++];
    switch (c) {
      case '\\':
        if (at_ < text_.size() && text_[at_] != '0' && IsDigit(text_[at_])) return false;
        ++at_;
        BeginPart({1, 0});
        break;
      case '[':
        SkipBracket();
        BeginPart({1, 0});
        break;
      case '(':
        EndPart();
        groups_.emplace_back();
        break;
      case ')':
        if (groups_.size() > 1) CloseGroup();
        break;
      case '*':
      case '?':
        part_.repetitions += 1;
        break;
      case '+':
        part_.Repeat(2);
        part_.repetitions += 1;
        break;
      case '{':
        RepeatCounted();
        break;
      default:
        BeginPart({1, 0});
    }
    return true;
  }

  // A repetition is of the part that stands before it.
  void BeginPart(const Size& size) {
    EndPart();
    part_ = size;
  }
  void EndPart() {
    groups_.back().Add(part_);
    part_ = {};
  }
  void CloseGroup() {
    EndPart();
    const Size group = groups_.back();
    groups_.pop_back();
    part_ = group;
  }

  // [^]a-z[:digit:]]
  void SkipBracket() {
    if (at_ < text_.size() && text_[at_] == '^') ++at_;
    if (at_ < text_.size() && text_[at_] == ']') ++at_;
    while (at_ < text_.size() && text_[at_] != ']') {
      const bool isClass = text_[at_] == '[' && at_ + 1 < text_.size() &&
                           std::string_view(":.=").find(text_[at_ + 1]) != std::string_view::npos;
      std::size_t end = std::string_view::npos;
      if (isClass) end = text_.find(std::string{text_[at_ + 1], ']'}, at_ + 2);
      at_ = end == std::string_view::npos ? at_ + 1 : end + 2;
    }
    ++at_;
  }

  // {5}, {5,} or {5,9}
  void RepeatCounted() {
    const std::uint64_t least = TakeNumber();
    std::uint64_t greatest = least;
    if (at_ < text_.size() && text_[at_] == ',') {
      ++at_;
      greatest = TakeNumber();
    }
    if (at_ < text_.size() && text_[at_] == '}') ++at_;
    part_.Repeat(std::max({least, greatest, std::uint64_t{1}}));
    part_.repetitions += greatest >= least ? greatest - least : 1;
  }
  std::uint64_t TakeNumber() {
    std::uint64_t number = 0;
    for (; at_ < text_.size() && IsDigit(text_[at_]); ++at_) {
      number = std::min(Size::most, number * 10 + static_cast<std::uint64_t>(text_[at_] - '0'));
    }
    return number;
  }

  std::string_view text_;
  std::size_t at_ = 0;
  std::vector<Size> groups_;  // open ones, the whole expression first
  Size part_;                 // the last part of the innermost
};

}  // namespace

std::string ProblemOfRegExp(std::string_view expression) {
  return RegExpWalk(expression).Problem();
}

}  // namespace fabscope
