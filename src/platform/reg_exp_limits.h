#pragma once

#include <string>
#include <string_view>

namespace fabscope {

// Why a regular expression must not be given to the C library, or an empty text. The library has no
// limits of its own: expressions that fit on a line can take all memory, all of the stack, or more
// time than anybody has.
std::string ProblemOfRegExp(std::string_view expression);

}  // namespace fabscope
