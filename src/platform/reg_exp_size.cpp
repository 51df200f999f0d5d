// One pass over the expression puts the numbers of its pieces together, as the C library does the
// pieces: "(a?b?){3}" has two parts in a row that may take no character, and they are three times
// in a row, since a copy may take none at all; "(a?b){3}" ends each row with a b.

#include "platform/reg_exp_size.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

namespace fabscope::internal {
namespace {

// Of a piece: the longest rows of parts that take no character.
struct Piece {
  std::optional<std::int64_t> through;  // from its begin to its end; none when it takes a character
  std::int64_t head = 0;                // from its begin
  std::int64_t tail = 0;                // up to its end
  std::int64_t longest = 0;             // anywhere
  std::int64_t parts = 0;
};

std::int64_t Bounded(std::int64_t number) { return std::min(number, mostCounted); }

Piece Nothing() {
  Piece piece;
  piece.through = 0;
  return piece;
}
Piece Character() {
  Piece piece;
  piece.parts = 1;
  return piece;
}
Piece Empty(std::int64_t row) {
  return {.through = row, .head = row, .tail = row, .longest = row, .parts = 1};
}
// A place between two characters counts for many: the C library copies all that may follow it.
Piece Place() { return Empty(20); }

Piece Then(const Piece& a, const Piece& b) {
  Piece both;
  if (a.through && b.through) both.through = Bounded(*a.through + *b.through);
  both.head = a.through ? std::max(a.head, Bounded(*a.through + b.head)) : a.head;
  both.tail = b.through ? std::max(b.tail, Bounded(*b.through + a.tail)) : b.tail;
  both.longest = std::max({a.longest, b.longest, Bounded(a.tail + b.head)});
  both.parts = Bounded(a.parts + b.parts);
  return both;
}

Piece Or(const Piece& a, const Piece& b) {
  Piece either;
  if (a.through || b.through)
    either.through = std::max(a.through.value_or(0), b.through.value_or(0));
  either.head = std::max(a.head, b.head);
  either.tail = std::max(a.tail, b.tail);
  either.longest = std::max(a.longest, b.longest);
  either.parts = Bounded(a.parts + b.parts + 1);
  return either;
}

// One that may be left out, or come again.
Piece Optional(const Piece& a) {
  Piece optional = Then(Then(Empty(1), a), Nothing());
  optional.through = Bounded(a.through.value_or(0) + 1);
  optional.tail = std::max(optional.tail, *optional.through);
  optional.longest = std::max(optional.longest, Bounded(optional.tail + optional.head));
  return optional;
}

Piece Times(const Piece& a, std::int64_t times) {
  Piece all = Nothing();
  // Doubles what it has: a repetition may be one of tens of thousands.
  for (Piece power = a; times > 0; times /= 2, power = Then(power, power)) {
    if (times % 2 == 1) all = Then(all, power);
  }
  return all;
}

class Sizes {
 public:
  explicit Sizes(std::string_view expression) : rest_(expression) {}

  RegExpSize Run() {
    while (!rest_.empty()) TakeNext();
    // A group without its end is none.
    while (open_.size() > 1) Close();
    const Piece whole = open_.back().Whole();
    return {depth_, whole.parts, whole.longest};
  }

 private:
  struct Group {
    Piece alternatives = Nothing();
    bool hasAlternatives = false;
    Piece before = Nothing();  // of this alternative, without the last piece
    Piece last = Nothing();

    void Add(const Piece& piece) {
      before = Then(before, last);
      last = piece;
    }
    Piece Whole() const {
      const Piece alternative = Then(before, last);
      return hasAlternatives ? Or(alternatives, alternative) : alternative;
    }
  };

  void TakeNext() {
    const char c = rest_.front();
    rest_.remove_prefix(1);
    Group& group = open_.back();
    switch (c) {
      case '(':
        open_.emplace_back();
        depth_ = std::max(depth_, static_cast<std::int64_t>(open_.size() - 1));
        break;
      case ')':
        if (open_.size() > 1) {
          Close();
        } else {
          group.Add(Character());
        }
        break;
      case '|':
        group.alternatives = group.Whole();
        group.hasAlternatives = true;
        group.before = group.last = Nothing();
        break;
      case '*':
      case '?':
        group.last = Optional(group.last);
        break;
      case '+':
        group.last = Then(group.last, Optional(group.last));
        break;
      case '{':
        TakeInterval();
        break;
      case '[':
        SkipBrackets();
        group.Add(Character());
        break;
      case '\\':
        TakeEscape();
        break;
      case '^':
      case '$':
        group.Add(Place());
        break;
      default:
        group.Add(Character());
    }
  }

  void Close() {
    const Piece inside = open_.back().Whole();
    open_.pop_back();
    open_.back().Add(Then(Then(Empty(1), inside), Empty(1)));
  }

  // "\(" is a character; a place between two, and a group that was matched before, may take none.
  void TakeEscape() {
    if (rest_.empty()) return;
    const bool isEmpty = rest_.substr(0, 1).find_first_of("bB<>`'123456789") == 0;
    rest_.remove_prefix(1);
    open_.back().Add(isEmpty ? Place() : Character());
  }

  std::optional<std::int64_t> TakeNumber() {
    std::optional<std::int64_t> number;
    while (!rest_.empty() && rest_.front() >= '0' && rest_.front() <= '9') {
      number = Bounded(number.value_or(0) * 10 + (rest_.front() - '0'));
      rest_.remove_prefix(1);
    }
    return number;
  }

  // "{2}", "{2,}", "{,3}" or "{2,3}"; anything else does not compile.
  void TakeInterval() {
    const std::int64_t least = TakeNumber().value_or(0);
    std::optional<std::int64_t> most = least;
    if (!rest_.empty() && rest_.front() == ',') {
      rest_.remove_prefix(1);
      most = TakeNumber();
    }
    if (!rest_.empty() && rest_.front() == '}') rest_.remove_prefix(1);
    Piece& last = open_.back().last;
    const Piece optional = Optional(last);
    const std::int64_t optionals = most ? std::max<std::int64_t>(*most - least, 0) : 1;
    last = Then(Times(last, least), Times(optional, optionals));
  }

  // A "]" that comes first is a member, and so is one in "[:alpha:]", "[=a=]" and "[.].]".
  void SkipBrackets() {
    std::size_t at = rest_.starts_with('^') ? 1 : 0;
    if (at < rest_.size() && rest_[at] == ']') ++at;
    while (at < rest_.size() && rest_[at] != ']') {
      const char kind = at + 1 < rest_.size() ? rest_[at + 1] : ' ';
      std::size_t end = std::string_view::npos;
      if (rest_[at] == '[' && (kind == ':' || kind == '=' || kind == '.')) {
        const std::array<char, 2> closing{kind, ']'};
        end = rest_.find(std::string_view(closing.data(), closing.size()), at + 2);
      }
      at = end == std::string_view::npos ? at + 1 : end + 2;
    }
    rest_.remove_prefix(std::min(at + 1, rest_.size()));
  }

  std::string_view rest_;
  std::vector<Group> open_{1};
  std::int64_t depth_ = 0;
};

}  // namespace

RegExpSize SizeOf(std::string_view expression) { return Sizes(expression).Run(); }

}  // namespace fabscope::internal
