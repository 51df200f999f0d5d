#include "fat_tree/findings.h"

namespace fabscope {
namespace {

std::size_t Issues(const MissingLink&) { return 0; }
std::size_t Issues(const InvalidLink&) { return 0; }
// One for each number that occurs.
std::size_t Issues(const UnevenLinks& found) { return found.others.size() + 1; }
std::size_t Issues(const SuspectedBlocking&) { return 1; }
std::size_t Issues(const AsymmetricAPorts& found) { return found.ports.size(); }
std::size_t Issues(const SharedFlid&) { return 1; }

}  // namespace

std::size_t IssuesOf(const Finding& finding) {
  return std::visit([](const auto& found) { return Issues(found); }, finding);
}

}  // namespace fabscope
