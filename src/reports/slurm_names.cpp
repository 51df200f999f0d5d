// Names that Slurm takes.
//
// Its configuration has blanks, commas, '=', '#', quotes, backslashes and brackets for itself, and
// a dot separates the switches in the SLURM_TOPOLOGY_ADDR of a job. A switch may be called anything
// there, so it gets a name that is as near to its own as can be. A host may not: Slurm knows its
// nodes from elsewhere, and another name would be another node.
//
// In a host list "host[1-3]" means host1, host2 and host3; "host[08-10]" keeps the width of its
// first number. Numbers of the same value but other width ("host1", "host01") are other hosts, so a
// range goes on only to the name that it would be read as.

#include "reports/slurm_names.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "fabric/fabric_walk.h"
#include "fabric/guid.h"
#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

// Slurm counts in 64 bits; names with longer numbers stand as they are.
constexpr std::size_t mostDigits = 9;

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsNameCharacter(char c) { return IsLetter(c) || IsDigit(c) || c == '-' || c == '_'; }

std::string OwnName(const IBNode& node) { return std::string(node.name) + GetSwitchASIC(&node); }

std::string TakenBySlurm(const std::string& name) {
  std::string taken;
  bool isBetween = false;
  for (const char c : name) {
    if (IsNameCharacter(c)) {
      taken += c;
    } else if (!isBetween) {
      taken += '_';
    }
    isBetween = !IsNameCharacter(c);
  }
  return taken.empty() ? "switch" : taken;
}

// The number at the end of a name: its value, and how it is written.
using Number = std::pair<std::uint64_t, std::string>;

Number Next(const Number& number, std::size_t width) {
  std::string digits = std::to_string(number.first + 1);
  if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
  return {number.first + 1, digits};
}

// Takes the first number, and those that a range from it goes on to.
std::string TakeRange(std::set<Number>& numbers) {
  const Number first = *numbers.begin();
  Number last = first;
  for (auto at = numbers.begin(); at != numbers.end();
       at = numbers.find(Next(last, first.second.size()))) {
    last = *at;
    numbers.erase(at);
  }
  return first == last ? first.second : first.second + "-" + last.second;
}

std::string Bracketed(const std::string& prefix, std::set<Number> numbers) {
  if (numbers.size() == 1) return prefix + numbers.begin()->second;
  std::string text;
  while (!numbers.empty()) {
    text += text.empty() ? prefix + "[" : ",";
    text += TakeRange(numbers);
  }
  return text + "]";
}

}  // namespace

std::optional<std::string> SlurmHostName(std::string_view description) {
  const std::string_view text = Trimmed(description);
  const std::string_view word = text.substr(0, text.find(' '));
  const bool isName = !word.empty() && std::all_of(word.begin(), word.end(), [](char c) {
    return IsNameCharacter(c) || c == '.';
  });
  return isName ? std::optional<std::string>(word) : std::nullopt;
}

std::string SlurmHostList(const std::vector<std::string>& names) {
  std::map<std::string, std::set<Number>> numbered;
  std::set<std::string> entries;
  for (const std::string& name : names) {
    const std::size_t end = name.find_last_not_of("0123456789") + 1;
    const std::string digits = name.substr(end);
    if (end == 0 || digits.empty() || digits.size() > mostDigits) {
      entries.insert(name);
    } else {
      numbered[name.substr(0, end)].emplace(std::stoull(digits), digits);
    }
  }
  for (const auto& [prefix, numbers] : numbered) entries.insert(Bracketed(prefix, numbers));
  std::string list;
  for (const std::string& entry : entries) list += (list.empty() ? "" : ",") + entry;
  return list;
}

SlurmSwitchNames::SlurmSwitchNames(const std::vector<const IBNode*>& switches,
                                   std::set<std::string> taken) {
  std::map<std::string, std::size_t> wanted;
  for (const std::string& name : taken) ++wanted[name];
  for (const IBNode* node : switches) ++wanted[TakenBySlurm(OwnName(*node))];
  // Who has a name for itself keeps it, whatever others are called then.
  for (const auto& [name, count] : wanted) {
    if (count == 1) taken.insert(name);
  }
  for (const IBNode* node : switches) {
    std::string name = TakenBySlurm(OwnName(*node));
    if (wanted[name] > 1) {
      name += "-" + GuidText(node->guid);
      while (!taken.insert(name).second) name += '_';
    }
    names_.emplace(node, name);
  }
}

std::vector<const IBNode*> SlurmSwitchNames::GetRenamed() const {
  std::vector<const IBNode*> renamed;
  for (const auto& [node, name] : names_) {
    if (name != OwnName(*node)) renamed.push_back(node);
  }
  return renamed;
}

}  // namespace fabscope::internal
