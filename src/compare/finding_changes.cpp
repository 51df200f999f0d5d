// Which faults two checked fabrics have in common.
//
// A fault is known by a key that holds in both fabrics. There can be millions of faults, so no key
// is kept: the faults of each fabric are sorted by keys that are made again for each comparison.

#include "compare/finding_changes.h"

#include <algorithm>
#include <array>
#include <map>
#include <numeric>
#include <tuple>
#include <utility>

#include "fat_tree/neighborhood.h"

namespace fabscope::internal {
namespace {

using KeyPlace = std::pair<std::uint64_t, std::uint8_t>;

// What tells that two faults are the same.
struct FaultKey {
  std::size_t kind = 0;
  std::int32_t links = 0;
  bool isOfNeighborhoods = false;  // of what is wrong with groups
  std::vector<std::uint64_t> numbers;
  // A node and its port, the lesser first: an end may come first in one fabric and second in the
  // other.
  std::array<KeyPlace, 2> places{};
  std::vector<std::uint64_t> groups;  // ascending

  friend bool operator==(const FaultKey&, const FaultKey&) = default;
  friend bool operator<(const FaultKey& a, const FaultKey& b) {
    return std::tie(a.kind, a.links, a.isOfNeighborhoods, a.numbers, a.places, a.groups) <
           std::tie(b.kind, b.links, b.isOfNeighborhoods, b.numbers, b.places, b.groups);
  }
};

// What a finding tells besides places.
class NumbersOfKey : public IgnoredParts {
 public:
  explicit NumbersOfKey(FaultKey& key) : key_(key) {}

  void Number(const char* /*name*/, std::uint64_t number) { key_.numbers.push_back(number); }
  void Flag(const char* name, bool isSet) { Number(name, isSet ? 1 : 0); }
  void Choice(const char* name, bool isFirst, const char* /*first*/, const char* /*second*/) {
    Flag(name, isFirst);
  }

 private:
  FaultKey& key_;
};

// One of the two fabrics: how its nodes and groups are known, and its faults by their keys.
class Side {
 public:
  Side(const FaultList& faults, const FTTopology& topology, const Counterparts& nodes, bool isNew)
      : faults_(faults), nodes_(nodes), isNew_(isNew) {
    for (const auto& groups : topology.GetNeighborhoods()) {
      for (const FTNeighborhood* group : groups) identities_[group] = IdentityOf(*group);
    }
    sorted_.resize(faults.size());
    std::iota(sorted_.begin(), sorted_.end(), 0U);
    std::sort(sorted_.begin(), sorted_.end(), [this](std::uint32_t a, std::uint32_t b) {
      const FaultKey keyA = KeyOf(a);
      const FaultKey keyB = KeyOf(b);
      return keyA < keyB || (keyA == keyB && a < b);
    });
  }

  FaultKey KeyOf(std::size_t place) const;
  // The places of the faults in the order of their keys, and of equal ones in their own.
  const std::vector<std::uint32_t>& Sorted() const { return sorted_; }

 private:
  std::uint64_t IdentityOf(const IBNode& node) const {
    return isNew_ ? nodes_.IdentityOfNew(node) : nodes_.IdentityOfOld(node);
  }
  bool IsInBoth(const IBNode& node) const {
    return (isNew_ ? nodes_.Then(node) : nodes_.Now(node)) != nullptr;
  }
  // By the lines that stayed, if there are any.
  std::uint64_t IdentityOf(const FTNeighborhood& group) const {
    std::pair<bool, std::uint64_t> first{true, ~std::uint64_t{0}};
    for (const IBNode* line : group.GetLines()) {
      first = std::min(first, {!IsInBoth(*line), IdentityOf(*line)});
    }
    return first.second;
  }

  const FaultList& faults_;
  const Counterparts& nodes_;
  bool isNew_;
  std::map<const FTNeighborhood*, std::uint64_t> identities_;
  std::vector<std::uint32_t> sorted_;
};

FaultKey Side::KeyOf(std::size_t place) const {
  FaultKey key;
  const Finding& finding = faults_.FindingAt(place);
  key.kind = finding.index();
  // Only these can be so many that it matters to make no list of their places.
  if (const auto* missing = std::get_if<MissingLink>(&finding)) {
    const std::uint64_t spine = IdentityOf(*missing->spine);
    const std::uint64_t line = IdentityOf(*missing->line);
    key.places = {KeyPlace{std::min(spine, line), 0}, KeyPlace{std::max(spine, line), 0}};
    return key;
  }
  const Fault fault = faults_[place];
  key.links = fault.links;
  NumbersOfKey numbers(key);
  TellPartsOf(finding, numbers);
  for (const FTNeighborhood* group : fault.groups) key.groups.push_back(identities_.at(group));
  std::sort(key.groups.begin(), key.groups.end());
  if (!fault.groups.empty()) {
    key.isOfNeighborhoods = IsOfNeighborhoods(finding);
    return key;
  }
  for (std::size_t i = 0; i < fault.places.size(); ++i) {
    key.places.at(i) = {IdentityOf(*fault.places[i].node), fault.places[i].port};
  }
  if (fault.places.size() == 2 && key.places[1] < key.places[0]) {
    std::swap(key.places[0], key.places[1]);
  }
  return key;
}

// By place: whether the other side has the fault, too.
std::vector<bool> FindShared(const Side& side, const Side& other) {
  std::vector<bool> isShared(side.Sorted().size());
  auto candidate = other.Sorted().begin();
  for (const std::uint32_t place : side.Sorted()) {
    const FaultKey key = side.KeyOf(place);
    while (candidate != other.Sorted().end() && other.KeyOf(*candidate) < key) ++candidate;
    isShared[place] = candidate != other.Sorted().end() && other.KeyOf(*candidate) == key;
  }
  return isShared;
}

// Those that the other side has not, each once.
FaultList Without(const FaultList& faults, const Side& side, const Side& other) {
  std::vector<bool> isNew = FindShared(side, other);
  isNew.flip();
  const std::vector<std::uint32_t>& sorted = side.Sorted();
  for (std::size_t i = 1; i < sorted.size(); ++i) {
    if (side.KeyOf(sorted[i]) == side.KeyOf(sorted[i - 1])) isNew[sorted[i]] = false;
  }
  return faults.Only(isNew);
}

}  // namespace

FindingChanges CompareFindings(const CheckedFabric& was, const CheckedFabric& is,
                               const Counterparts& nodes) {
  const FaultList then(was);
  const FaultList now(is);
  const Side before(then, was.topology, nodes, false);
  const Side after(now, is.topology, nodes, true);
  return {Without(then, before, after), Without(now, after, before)};
}

std::vector<GoneFinding> FindGone(const CheckedFabric& was, const FaultList& faults,
                                  const CheckedFabric& is, const Counterparts& nodes) {
  if (is.findings.RecordsNotListed() != 0) return {};
  const FaultList now(is);
  const std::vector<bool> isLeft =
      FindShared(Side(faults, was.topology, nodes, false), Side(now, is.topology, nodes, true));
  std::vector<GoneFinding> gone;
  std::size_t fault = 0;
  for (std::size_t place = 0; place < was.findings.size(); ++place) {
    GoneFinding finding{place, fault, fault};
    bool isAnyLeft = false;
    for (; fault < faults.size() && faults.FindingOf(fault) == place; ++fault) {
      isAnyLeft = isAnyLeft || isLeft[fault];
    }
    finding.endFault = fault;
    if (!isAnyLeft) gone.push_back(finding);
  }
  return gone;
}

}  // namespace fabscope::internal
