#pragma once

#include <bitset>
#include <string>
#include <string_view>

namespace fabscope::internal {

// What a text in which no fabric was found may be instead: an empty or binary file, or another list
// that the tools around a fabric print. A loader shows it line by line and, where it found nothing,
// tells what it was.
class ForeignFile {
 public:
  void Look(std::string_view line);
  // The message; when nothing is recognised, what was expected.
  std::string Tell() const;

 private:
  bool isEmpty_ = true;
  std::bitset<8> hasMark_;  // by place in the table of marks
};

}  // namespace fabscope::internal
