#include "formats/foreign_files.h"

#include <array>
#include <cstddef>

namespace fabscope::internal {
namespace {

// A line by which a file is known for what it is, and what is said of it then.
struct Mark {
  bool (*isIn)(std::string_view line);
  const char* message;
};

bool Has(std::string_view line, std::string_view text) {
  return line.find(text) != std::string_view::npos;
}

// The first one that is in a file holds. The commonest wrong files are other lists that the same
// tools print.
constexpr std::array<Mark, 4> marks{{
    {[](std::string_view line) { return line.find('\0') != std::string_view::npos; },
     "the file is binary, expected a fabric document (JSON) or a topology dump"},
    {[](std::string_view line) {
       return (line.starts_with("CA ") || line.starts_with("SW ") || line.starts_with("RT ")) &&
              Has(line, " 0x");
     },
     "this is the port list of `ibnetdiscover -p`, which does not tell the size of a switch; give "
     "the output of `ibnetdiscover` without options"},
    {[](std::string_view line) { return Has(line, "==(") && Has(line, ")==>"); },
     "this is the output of `iblinkinfo`; give the output of `ibnetdiscover` without options"},
    {[](std::string_view line) { return line.starts_with("# Initiated from node "); },
     "no node behind the header of the dump: did `ibnetdiscover` run as root, on a host whose "
     "adapter is up?"},
}};

}  // namespace

void ForeignFile::Look(std::string_view line) {
  isEmpty_ = isEmpty_ && line.find_first_not_of(" \t\r") == std::string_view::npos;
  for (std::size_t i = 0; i < marks.size(); ++i) {
    if (marks.at(i).isIn(line)) hasMark_.set(i);
  }
}

std::string ForeignFile::Tell() const {
  if (isEmpty_) return "the file is empty";
  for (std::size_t i = 0; i < marks.size(); ++i) {
    if (hasMark_.test(i)) return marks.at(i).message;
  }
  return "no node found, expected a fabric document (JSON) or a topology dump as `ibnetdiscover` "
         "prints it";
}

}  // namespace fabscope::internal
