// Which switches may be the roots is guessed from how far they are from hosts, and a regular
// expression for them is made from the shape of their names.

#include "check/root_names.h"

#include <algorithm>
#include <cctype>
#include <deque>
#include <map>
#include <string_view>
#include <vector>

namespace fabscope::internal {
namespace {

constexpr std::size_t maxFormsShown = 5;

// A name's shape: "leaf-p0l1" is of the form "leaf-p<N>l<N>" and is matched by
// "^leaf-p[0-9]+l[0-9]+$".
struct NameForm {
  std::string shown;
  std::string regex;

  friend bool operator<(const NameForm& a, const NameForm& b) { return a.shown < b.shown; }
};

NameForm FormOf(std::string_view name) {
  NameForm form{"", "^"};
  for (std::size_t i = 0; i < name.size(); ++i) {
    const char c = name[i];
    if (std::isdigit(static_cast<unsigned char>(c)) != 0) {
      const bool inNumber = i > 0 && std::isdigit(static_cast<unsigned char>(name[i - 1])) != 0;
      if (inNumber) continue;
      form.shown += "<N>";
      form.regex += "[0-9]+";
      continue;
    }
    if (std::string_view(R"(.[]()*+?{}|^$\)").find(c) != std::string_view::npos) form.regex += '\\';
    form.shown += c;
    form.regex += c;
  }
  form.regex += '$';
  return form;
}

constexpr std::size_t unreached = ~std::size_t{0};

// By node: how far a switch is from the nearest that leads to a host, in hops.
std::vector<std::size_t> DistancesFromHosts(const IBFabric& fabric, const TreeLinks& links) {
  std::vector<std::size_t> distances(fabric.GetNodes().size(), unreached);
  std::deque<const IBNode*> queue;
  for (const IBNode* node : fabric.switches) {
    if (links.HostCables(*node) == 0) continue;
    distances[node->index] = 0;
    queue.push_back(node);
  }
  for (; !queue.empty(); queue.pop_front()) {
    const std::size_t next = distances[queue.front()->index] + 1;
    for (const TreeLink& link : links.Of(*queue.front())) {
      if (distances[link.remote] != unreached) continue;
      distances[link.remote] = next;
      queue.push_back(&fabric.GetNodes()[link.remote]);
    }
  }
  return distances;
}

// The switches whose names have one form.
struct Namesakes {
  std::size_t count = 0;
  std::size_t reached = 0;  // of these, from hosts
  std::size_t hops = 0;     // to all of these together
};

using FormTable = std::map<NameForm, Namesakes>;

FormTable FormsOf(const IBFabric& fabric, const TreeLinks& links) {
  const auto distances = DistancesFromHosts(fabric, links);
  FormTable forms;
  for (const IBNode* node : fabric.switches) {
    Namesakes& namesakes = forms[FormOf(node->name)];
    ++namesakes.count;
    if (distances[node->index] == unreached) continue;
    ++namesakes.reached;
    namesakes.hops += distances[node->index];
  }
  return forms;
}

// Whether a name says that its switch is no root.
bool IsLeafName(const NameForm& form) {
  std::string name = form.shown;
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return name.find("leaf") != std::string::npos || name.find("edge") != std::string::npos;
}

// Whether switches of form a are likelier roots than those of form b. On the average roots are the
// farthest from hosts; one leaf without hosts may be farther, and a lost switch as far. Without
// hosts names must tell, and roots are fewest.
bool AreLikelierRoots(const FormTable::value_type& a, const FormTable::value_type& b) {
  const Namesakes& left = a.second;
  const Namesakes& right = b.second;
  if (left.hops * right.reached != right.hops * left.reached) {
    return left.hops * right.reached > right.hops * left.reached;
  }
  if (IsLeafName(a.first) != IsLeafName(b.first)) return !IsLeafName(a.first);
  return left.reached != 0 ? left.count > right.count : left.count < right.count;
}

std::string Quoted(const std::string& regex) {
  std::string quoted = "'";
  for (const char c : regex) quoted += c == '\'' ? std::string(R"('\'')") : std::string(1, c);
  return quoted + "'";
}

}  // namespace

std::string NameTheRoots(const IBFabric& fabric, const TreeLinks& links, RootsFrom method) {
  const FormTable forms = FormsOf(fabric, links);
  const std::string start = "name the roots with --root-regex ERE";
  if (forms.size() < 2) {
    const std::string names = "tell the switches apart with --node-name-map FILE and " + start;
    return method == RootsFrom::Inferred
               ? names + ", or give the subnet manager's ranks with --ranks FILE"
               : "try --roots inferred, or " + names;
  }
  const auto guess = std::min_element(forms.begin(), forms.end(), AreLikelierRoots);

  std::string shown;
  std::size_t count = 0;
  for (const auto& [form, namesakes] : forms) {
    if (++count > maxFormsShown) {
      shown += ", ...";
      break;
    }
    shown += (count == 1 ? "" : ", ") + form.shown;
  }
  return start + ", for example --root-regex " + Quoted(guess->first.regex) +
         " (switches are named " + shown + ")";
}

}  // namespace fabscope::internal
