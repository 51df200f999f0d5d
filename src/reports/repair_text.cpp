#include "reports/repair_text.h"

#include <algorithm>
#include <array>
#include <utility>

#include "compare/repair_document.h"
#include "fabric/guid.h"
#include "fat_tree/node_record.h"

namespace fabscope::internal {
namespace {

// The words for the action stand in a column.
std::string ActionText(RepairAction action) {
  constexpr std::size_t width = 7;
  std::string text = NameOf(action);
  text.resize(std::max(width, text.size() + 1), ' ');
  return text;
}

class CableWords {
 public:
  CableWords(const TreeRanks& ranks, const SwitchNames& names) : ranks_(ranks), names_(names) {}

  std::string Of(const CableChanges& cables) const {
    if (const std::optional<std::string> swap = SwapText(cables)) return *swap;
    std::string text;
    for (const CableChange& change : cables) {
      if (!text.empty()) text += "; ";
      text += Of(change);
    }
    return text;
  }

 private:
  std::string Name(const CableEnd& end) const { return names_.Of(end); }

  // Which end of the cable that is.
  std::string EndWord(const CableEnd& moved, const CableEnd& kept) const {
    const int rank = ranks_.ofNode[moved.node];
    const int other = ranks_.ofNode[kept.node];
    if (rank == other || rank < 0 || other < 0) return "other";
    return rank < other ? "upper" : "lower";
  }

  std::string Of(const CableChange& change) const {
    const std::vector<Handling> handlings = HandlingsOf(change);
    const Handling& one = handlings.front();
    if (!change.before) {
      return ActionText(RepairAction::Connect) + Name(one.kept) + " to " + Name(*one.to);
    }
    if (!change.after) {
      return ActionText(RepairAction::Disconnect) + Name(one.kept) + " from " + Name(*one.from);
    }
    if (handlings.size() == 1) {
      return ActionText(RepairAction::Move) + Name(one.kept) + " at its " +
             EndWord(*one.from, one.kept) + " end: " + Name(*one.from) + " -> " + Name(*one.to);
    }
    return ActionText(RepairAction::Move) + "both ends of the cable from " + Name(one.kept) +
           " to " + Name(*one.from) + ": now from " + Name(change.after->lower) + " to " +
           Name(change.after->upper);
  }

  // Of two cables that exchange an end.
  std::optional<std::string> SwapText(const CableChanges& cables) const {
    if (cables.size() != 2) return std::nullopt;
    const std::vector<Handling> first = HandlingsOf(cables[0]);
    const std::vector<Handling> second = HandlingsOf(cables[1]);
    if (first.size() != 1 || second.size() != 1) return std::nullopt;
    const Handling& a = first.front();
    const Handling& b = second.front();
    const bool isSwap = a.from && a.to && a.from == b.to && a.to == b.from;
    if (!isSwap) return std::nullopt;
    const std::string word = EndWord(*a.from, a.kept);
    const bool areAlike = word == EndWord(*b.from, b.kept);
    return ActionText(RepairAction::Swap) + Name(a.kept) + " and " + Name(b.kept) + " at their " +
           (areAlike ? word : "other") + " ends: " + Name(*a.from) + " <-> " + Name(*b.from);
  }

  const TreeRanks& ranks_;
  const SwitchNames& names_;
};

// "a, b and c"; of many the first few and how many more there are.
std::string Listed(const std::vector<std::string>& words) {
  constexpr std::size_t most = 6;
  const bool isLong = words.size() > most;
  const std::size_t shown = isLong ? most - 1 : words.size();
  std::string text;
  for (std::size_t i = 0; i < shown; ++i) {
    if (i != 0) text += !isLong && i + 1 == shown ? " and " : ", ";
    text += words[i];
  }
  return isLong ? text + " and " + std::to_string(words.size() - shown) + " more" : text;
}

struct NoteWords {
  std::string switches;
  std::string ports;  // "port 3", "ports 3 and 4"
  bool isOne;         // switch
};

NoteWords WordsOf(const RepairNote& note, const SwitchNames& names) {
  std::vector<std::string> switches;
  for (const std::uint32_t index : note.switches) {
    switches.push_back(names.Of(names.NodeOf(index)));
  }
  std::vector<std::string> ports;
  for (const std::uint8_t port : note.ports) ports.push_back(std::to_string(port));
  return {Listed(switches), (ports.size() == 1 ? "port " : "ports ") + Listed(ports),
          switches.size() == 1};
}

struct KindName {
  RepairNote::Kind kind;
  const char* name;
};

constexpr std::array<KindName, 6> kindNames{
    {{RepairNote::Kind::DeadSwitch, "dead-switch"},
     {RepairNote::Kind::SelfLoop, "self-loop"},
     {RepairNote::Kind::HostsOnSpines, "hosts-on-spines"},
     {RepairNote::Kind::UnusualGroup, "unusual-group"},
     {RepairNote::Kind::UncertainGroup, "uncertain-group"},
     {RepairNote::Kind::SwitchWithoutTree, "switch-without-tree"}}};

std::string WrongSpineText(const RepairStep& step, const SwitchNames& names) {
  if (step.action != RepairAction::Move) {
    return "In their group a spine has a cable too many, another one too few.";
  }
  const Handling handling = HandlingsOf(step.cables.front()).front();
  return names.Of(names.NodeOf(handling.from->node)) + " has a cable too many to " +
         names.Of(names.NodeOf(handling.kept.node)) + ", " +
         names.Of(names.NodeOf(handling.to->node)) + " one too few.";
}

std::string WrongGroupText(const RepairStep& step) {
  if (step.action == RepairAction::Swap)
    return "Each of the two leads into the group of the other.";
  if (step.action == RepairAction::Disconnect) return "The cable leads into another group.";
  return "The cable leads into another group, while its own lacks one.";
}

}  // namespace

SwitchNames::SwitchNames(const IBFabric& fabric, int showGuid)
    : fabric_(fabric), showGuid_(showGuid) {
  for (const IBNode* node : fabric.switches) ++counts_[GetNodeRecord(node, showGuid_)];
}

std::string SwitchNames::Of(const IBNode& node) const {
  std::string name = GetNodeRecord(&node, showGuid_);
  const auto known = counts_.find(name);
  const bool isShared = known != counts_.end() && known->second > 1;
  return isShared ? name + " (" + GuidText(node.guid) + ")" : name;
}

std::string SwitchNames::Of(const IBNode& node, std::uint8_t port) const {
  return Of(node) + " port " + std::to_string(port);
}

// An end that both cables have is the one that stays. When both are the same cable the upper end is
// told as the one that is plugged in anew.
std::vector<Handling> HandlingsOf(const CableChange& change) {
  if (!change.before) return {{change.after->lower, std::nullopt, change.after->upper}};
  const RepairCable& before = *change.before;
  if (!change.after) return {{before.lower, before.upper, std::nullopt}};
  const RepairCable& after = *change.after;
  if (before.lower == after.lower) return {{before.lower, before.upper, after.upper}};
  if (before.lower == after.upper) return {{before.lower, before.upper, after.lower}};
  if (before.upper == after.upper) return {{before.upper, before.lower, after.lower}};
  if (before.upper == after.lower) return {{before.upper, before.lower, after.upper}};
  return {{before.lower, before.upper, after.upper}, {after.upper, before.lower, after.lower}};
}

std::string StepText(const CableChanges& cables, const TreeRanks& ranks, const SwitchNames& names) {
  return CableWords(ranks, names).Of(cables);
}

std::string ReasonText(const RepairStep& step, const SwitchNames& names) {
  switch (step.reason) {
    case RepairReason::WrongGroup:
      return WrongGroupText(step);
    case RepairReason::WrongSpine:
      return WrongSpineText(step, names);
    case RepairReason::SameRank:
      return step.action == RepairAction::Swap ? "Each of the two joins switches of one rank."
                                               : "The cable joins two switches of one rank.";
    case RepairReason::SkipsRank:
      return step.action == RepairAction::Swap
                 ? "Each of the two joins ranks that are not neighbors."
                 : "The cable joins ranks that are not neighbors.";
    case RepairReason::TooMany:
      return "The two switches have more cables than the other pairs of their group.";
    case RepairReason::LinkLacking:
      return "All others of the group have a link here: a cable is missing, or its link is down.";
    case RepairReason::Exchanged:
      return "Each of the two is plugged in where the other belongs.";
    case RepairReason::Rotated:
      return "Three or more cables are plugged in where others of them belong.";
  }
  return {};
}

std::string NoteText(const RepairNote& note, const SwitchNames& names) {
  const NoteWords words = WordsOf(note, names);
  const std::string of = note.rank >= 0 ? " of rank " + std::to_string(note.rank) : "";
  switch (note.kind) {
    case RepairNote::Kind::DeadSwitch:
      return "a switch is dead or missing: " + words.ports + " of " + words.switches +
             (note.ports.size() == 1 ? " is" : " are") + " empty, where their siblings use " +
             (note.ports.size() == 1 ? "it" : "them");
    case RepairNote::Kind::SelfLoop:
      return "a cable leads from " + words.switches + " to the same switch: " + words.ports;
    case RepairNote::Kind::HostsOnSpines:
      return words.switches + of + (words.isOne ? " leads" : " lead") +
             " to hosts, as only leaves should";
    case RepairNote::Kind::UnusualGroup:
      return "the group of " + words.switches + of +
             " has another size than those beside it, perhaps by design";
    case RepairNote::Kind::UncertainGroup:
      return "too much of the group of " + words.switches + of +
             " is wrong to say what belongs where";
    case RepairNote::Kind::SwitchWithoutTree:
      return words.switches + (words.isOne ? " has" : " have") + " no place in the tree";
  }
  return {};
}

const char* KindOf(const RepairNote& note) {
  const auto* const found =
      std::find_if(kindNames.begin(), kindNames.end(),
                   [&](const KindName& entry) { return entry.kind == note.kind; });
  return found->name;
}

std::string CountText(const std::vector<RepairStep>& steps) {
  std::array<std::size_t, RepairClassNames.size()> counts{};
  for (const RepairStep& step : steps) ++counts.at(static_cast<std::size_t>(step.trust));
  std::string classes;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    if (counts.at(i) == 0) continue;
    if (!classes.empty()) classes += ", ";
    classes += std::to_string(counts.at(i)) + " " + RepairClassNames.at(i);
  }
  return std::to_string(steps.size()) + (steps.size() == 1 ? " repair (" : " repairs (") + classes +
         ")";
}

}  // namespace fabscope::internal
