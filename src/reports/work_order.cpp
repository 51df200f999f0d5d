#include "reports/work_order.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "compare/repair_document.h"
#include "fabric/guid.h"
#include "formats/node_order.h"
#include "platform/csv_desc.h"
#include "reports/repair_text.h"
#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

// The two ports that hands are at: where a plug is and where it goes, or those of two plugs that
// change places, or the ends of a cable that comes or goes.
struct Hands {
  CableEnd a;
  CableEnd b;
};

Hands HandsOf(const RepairStep& step) {
  const Handling first = HandlingsOf(step.cables.front()).front();
  if (!first.from) return {first.kept, *first.to};
  if (!first.to) return {*first.from, first.kept};
  return {*first.from, *first.to};
}

std::vector<std::uint32_t> SwitchesOf(const RepairStep& step) {
  std::vector<std::uint32_t> switches;
  for (const CableChange& change : step.cables) {
    for (const auto* cable : {&change.before, &change.after}) {
      if (!*cable) continue;
      switches.insert(switches.end(), {(*cable)->upper.node, (*cable)->lower.node});
    }
  }
  return switches;
}

// Digits count as numbers: rack 2 comes before rack 10.
int Compare(const std::string& a, const std::string& b) {
  return CompareNodeOrder(a.c_str(), 0, b.c_str(), 0);
}

class Walk {
 public:
  explicit Walk(const WorkOrder& order) : order_(order), steps_(order.plan.steps) {
    NumberPlaces();
    FindDependencies();
  }

  std::vector<std::size_t> Run() {
    std::vector<std::size_t> walk;
    Stop at{};
    while (!ready_.empty()) {
      // Onwards from here, or else from the start again.
      auto next = ready_.lower_bound({at, 0});
      if (next == ready_.end()) next = ready_.begin();
      const std::size_t step = next->second;
      at = next->first;
      ready_.erase(next);
      walk.push_back(step);
      for (const std::size_t other : waiting_[step]) {
        if (--missing_[other] == 0) ready_.insert({StopOf(other), other});
      }
    }
    return walk;
  }

 private:
  using Stop = std::pair<std::size_t, std::size_t>;  // the nearer and the farther place of a step

  // Switches that the walk leads to, by rack, unit and name.
  void NumberPlaces() {
    std::vector<std::uint32_t> switches;
    for (const RepairStep& step : steps_) {
      for (const CableEnd& end : {HandsOf(step).a, HandsOf(step).b}) switches.push_back(end.node);
    }
    std::sort(switches.begin(), switches.end());
    switches.erase(std::unique(switches.begin(), switches.end()), switches.end());
    std::sort(switches.begin(), switches.end(),
              [this](std::uint32_t a, std::uint32_t b) { return IsBefore(a, b); });
    for (const std::uint32_t node : switches) placeOf_.emplace(node, placeOf_.size());
  }
  bool IsBefore(std::uint32_t a, std::uint32_t b) const {
    const IBNode& nodeA = order_.fabric.GetNodes()[a];
    const IBNode& nodeB = order_.fabric.GetNodes()[b];
    const Location* placeA = order_.locations != nullptr ? order_.locations->Of(nodeA) : nullptr;
    const Location* placeB = order_.locations != nullptr ? order_.locations->Of(nodeB) : nullptr;
    // Those that nobody has a place for come last.
    if ((placeA == nullptr) != (placeB == nullptr)) return placeA != nullptr;
    if (placeA != nullptr) {
      if (const int racks = Compare(placeA->rack, placeB->rack)) return racks < 0;
      if (const int units = Compare(placeA->unit, placeB->unit)) return units < 0;
    }
    const std::string nameA(nodeA.getAlternativeName());
    const std::string nameB(nodeB.getAlternativeName());
    return CompareNodeOrder(nameA.c_str(), nodeA.guid, nameB.c_str(), nodeB.guid) < 0;
  }
  // A step waits for the one before it at each of its switches.
  void FindDependencies() {
    missing_.resize(steps_.size());
    waiting_.resize(steps_.size());
    std::map<std::uint32_t, std::size_t> lastAt;
    for (std::size_t i = 0; i < steps_.size(); ++i) {
      std::set<std::size_t> before;
      for (const std::uint32_t node : SwitchesOf(steps_[i])) {
        const auto [last, isFirst] = lastAt.try_emplace(node, i);
        if (!isFirst && last->second != i) before.insert(last->second);
        last->second = i;
      }
      for (const std::size_t other : before) waiting_[other].push_back(i);
      missing_[i] = before.size();
      if (before.empty()) ready_.insert({StopOf(i), i});
    }
  }
  Stop StopOf(std::size_t step) const {
    const Hands hands = HandsOf(steps_[step]);
    return std::minmax(placeOf_.at(hands.a.node), placeOf_.at(hands.b.node));
  }

  const WorkOrder& order_;
  const std::vector<RepairStep>& steps_;
  std::map<std::uint32_t, std::size_t> placeOf_;   // by IBNode::index
  std::vector<std::size_t> missing_;               // by step: how many it still waits for
  std::vector<std::vector<std::size_t>> waiting_;  // by step: who waits for it
  std::set<std::pair<Stop, std::size_t>> ready_;
};

class Rows {
 public:
  Rows(const WorkOrder& order, std::ostream& stream)
      : order_(order), names_(order.fabric, order.showGuid), stream_(stream) {}

  void Write() {
    WriteHeader();
    std::size_t number = 0;
    for (const std::size_t step : OrderOfWalk(order_)) WriteRow(++number, step);
  }

 private:
  void WriteHeader() {
    stream_ << "Done,Order,Step,Class,Action,ARack,AUnit,ASwitch,APort,AGuid";
    WriteMoreColumns('A');
    stream_ << ",BRack,BUnit,BSwitch,BPort,BGuid";
    WriteMoreColumns('B');
    stream_ << ",Do,Reason\n";
  }
  void WriteMoreColumns(char end) {
    if (order_.locations == nullptr) return;
    for (const std::string& column : order_.locations->moreColumns) {
      stream_ << ',' << QuotedCsv(end + (' ' + column));
    }
  }
  void WriteRow(std::size_t number, std::size_t place) {
    const RepairStep& step = order_.plan.steps[place];
    const Hands hands = HandsOf(step);
    stream_ << "[ ]," << number << ',' << place + 1 << ',' << NameOf(step.trust) << ','
            << NameOf(step.action);
    WriteEnd(hands.a);
    WriteEnd(hands.b);
    stream_ << ',' << QuotedCsv(WithoutPadding(StepText(step.cables, order_.plan.ranks, names_)))
            << ',' << QuotedCsv(ReasonText(step, names_)) << '\n';
  }
  void WriteEnd(const CableEnd& end) {
    const IBNode& node = names_.NodeOf(end.node);
    const Location* place = order_.locations != nullptr ? order_.locations->Of(node) : nullptr;
    stream_ << ',' << QuotedCsv(place != nullptr ? place->rack : "") << ','
            << QuotedCsv(place != nullptr ? place->unit : "") << ',' << QuotedCsv(names_.Of(node))
            << ',' << std::to_string(end.port) << ',' << GuidText(node.guid);
    if (order_.locations == nullptr) return;
    for (std::size_t i = 0; i < order_.locations->moreColumns.size(); ++i) {
      stream_ << ',' << QuotedCsv(place != nullptr ? place->more[i] : "");
    }
  }
  // The word for the action is padded for where steps stand below each other.
  static std::string WithoutPadding(std::string text) {
    const std::size_t end = text.find(' ');
    text.erase(end, text.find_first_not_of(' ', end) - end - 1);
    return text;
  }

  const WorkOrder& order_;
  const SwitchNames names_;
  std::ostream& stream_;
};

}  // namespace

std::vector<std::size_t> OrderOfWalk(const WorkOrder& order) { return Walk(order).Run(); }

void WriteWorkOrder(const WorkOrder& order, std::ostream& stream) {
  WriteForPeople(stream, [&](std::ostream& text) { Rows(order, text).Write(); });
}

}  // namespace fabscope::internal
