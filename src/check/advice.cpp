// Why no tree was found, in the user's terms. The stage's message says what failed; the cause is
// looked for anew here, in the fabric:
//
// - no switch leads to a host, so there is no leaf to start from;
// - a leaf sees switches at a distance that no tree of 2, 3 or 4 levels has;
// - neither, and still the leaves do not agree on the roots.
//
// The cure is nearly always to name the roots. Which switches they may be is guessed as those
// farthest from all hosts, and a regular expression for them is made from the shape of their names.

#include "check/advice.h"

#include <algorithm>
#include <cctype>
#include <deque>
#include <map>
#include <set>
#include <vector>

#include "fabric/fabric_walk.h"

namespace fabscope {
namespace {

constexpr std::size_t maxFormsShown = 5;

// A name's shape: "leaf-p0l1" is of the form "leaf-p<N>l<N>" and is matched by
// "^leaf-p[0-9]+l[0-9]+$".
struct NameForm {
  std::string shown;
  std::string regex;

  friend bool operator<(const NameForm& a, const NameForm& b) { return a.shown < b.shown; }
};

NameForm FormOf(const std::string& name) {
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

bool LeadsToHost(const IBNode& node) {
  const auto ports = GetTreePorts(node);
  return std::any_of(ports.begin(), ports.end(), [](const IBPort* port) {
    const IBNode* remote = GetLinkedNode(port);
    return remote != nullptr && remote->nodeType == NodeTypeCA && !remote->isSpecialNode();
  });
}

// The switches farthest from all that lead to hosts; empty when none does.
std::set<const IBNode*> FarthestFromHosts(const IBFabric& fabric) {
  std::map<const IBNode*, int> distance;
  std::deque<const IBNode*> queue;
  for (const IBNode* node : fabric.switches) {
    if (!LeadsToHost(*node)) continue;
    distance[node] = 0;
    queue.push_back(node);
  }
  int greatest = 0;
  for (; !queue.empty(); queue.pop_front()) {
    greatest = distance[queue.front()];
    for (const IBPort* port : GetTreePorts(*queue.front())) {
      const IBNode* remote = GetRemoteSwitch(port);
      if (remote != nullptr && distance.emplace(remote, greatest + 1).second) {
        queue.push_back(remote);
      }
    }
  }
  std::set<const IBNode*> farthest;
  for (const auto& [node, hops] : distance) {
    if (hops == greatest) farthest.insert(node);
  }
  return farthest;
}

// The forms of the switches' names, with the number of switches.
std::map<NameForm, std::size_t> FormsOf(const IBFabric& fabric) {
  std::map<NameForm, std::size_t> forms;
  for (const IBNode* node : fabric.switches) ++forms[FormOf(node->name)];
  return forms;
}

std::string Quoted(const std::string& regex) {
  std::string quoted = "'";
  for (const char c : regex) quoted += c == '\'' ? std::string(R"('\'')") : std::string(1, c);
  return quoted + "'";
}

// "name the roots with --root-regex ERE, for example ...".
std::string NameTheRoots(const IBFabric& fabric) {
  const std::map<NameForm, std::size_t> forms = FormsOf(fabric);
  const std::string start = "name the roots with --root-regex ERE";
  if (forms.size() < 2) {
    return start + ", or give the subnet manager's ranks with --ranks FILE";
  }
  // Roots are fewest; the farthest from the hosts are a better guess where there are hosts.
  auto guess = std::min_element(forms.begin(), forms.end(),
                                [](const auto& a, const auto& b) { return a.second < b.second; });
  const std::set<const IBNode*> farthest = FarthestFromHosts(fabric);
  if (!farthest.empty()) guess = forms.find(FormOf((*farthest.begin())->name));

  std::string shown;
  std::size_t count = 0;
  for (const auto& [form, switches] : forms) {
    if (++count > maxFormsShown) {
      shown += ", ...";
      break;
    }
    shown += (count == 1 ? "" : ", ") + form.shown;
  }
  return start + ", for example --root-regex " + Quoted(guess->first.regex) +
         " (switches are named " + shown + ")";
}

// The leaf that sees a tree of a height there is none of, in words; empty if there is no such leaf.
// The search for roots is done again as the stage did it.
std::string UnusualHeight(FTTopology& topology, const CheckOptions& options) {
  FTClassificationHandler handler;
  const IBNode* leaf = topology.GetFirstLeaf();
  for (int tries = 0; leaf != nullptr && tries <= options.retries; ++tries) {
    FTClassification* seen = handler.GetNewClassification(topology);
    seen->Classify(*leaf);
    const int distance = seen->GetMaxDistance();
    if (distance != 2 && distance != 4 && distance != 6) {
      return "from leaf " + leaf->name + " the farthest switch, " + seen->GetFarthestNode()->name +
             ", is " + std::to_string(distance) +
             " hops away, but trees of 2, 3 and 4 levels have 2, 4 and 6";
    }
    leaf = seen->GetLeafToClassify(handler.GetClassifications());
  }
  return {};
}

std::string AdviceOnAutomaticRoots(FTTopology& topology, const CheckOptions& options) {
  const IBFabric& fabric = topology.GetFabric();
  const std::string cure = NameTheRoots(fabric);
  if (topology.GetFirstLeaf() == nullptr) {
    return "no switch leads to a host: is this a dump without channel adapters? If so, " + cure;
  }
  const std::string height = UnusualHeight(topology, options);
  if (!height.empty()) return height + "; for other trees, " + cure;
  return "the leaves do not agree on the roots: " + cure;
}

}  // namespace

std::string AdviceOnBuilding(FTTopology& topology, const CheckOptions& options) {
  switch (options.roots) {
    case RootsFrom::Smdb:
      return "no switch has rank 0: give the subnet manager's ranks with --ranks FILE, or let the "
             "roots be found by themselves";
    case RootsFrom::Regex:
      return "no switch name matches: " + NameTheRoots(topology.GetFabric());
    case RootsFrom::Auto:
      break;
  }
  return AdviceOnAutomaticRoots(topology, options);
}

}  // namespace fabscope
