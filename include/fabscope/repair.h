#pragma once

#include <fabscope/check.h>
#include <fabscope/export.h>
#include <fabscope/fabric.h>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace fabscope {

namespace internal {
struct PlannedFabricData;
}  // namespace internal

/// A swap exchanges one end each of two cables; a move changes one end of one cable.
enum class RepairAction { Swap, Move, Connect, Disconnect };

/// How far a step may be trusted.
enum class RepairClass {
  Sure,    ///< any other explanation takes at least two more changes, or ports speak against it
  Likely,  ///< few cables support it, or much around it is wrong
  Ask,     ///< an alternative needs no more changes
};

/// A cable between two switches; `upper` is nearer to the roots.
struct Cable {
  Port upper;
  Port lower;
};

/// A cable as it is and as it should be. Without `before` it is a new one, without `after` it goes.
/// Ports are those of the fabric as it is.
struct CableChange {
  std::optional<Cable> before;
  std::optional<Cable> after;
};

/// One thing to do, by one pair of hands.
struct RepairStep {
  RepairAction action = RepairAction::Move;
  RepairClass trust = RepairClass::Ask;
  /// Two of a swap, else one.
  std::vector<CableChange> cables;
  /// Other repairs that would do, best first.
  std::vector<std::vector<CableChange>> alternatives;
  /// What to do and why, as the report says it.
  std::string text;
  std::string reason;
};

/// Which cables to move so that a fabric is a proper fat tree. A copy is the same plan and costs
/// next to nothing. Any number of threads may use one.
class FABSCOPE_API RepairPlan {
 public:
  /// Whether the steps are all that there is to do. If not, Message() says why.
  bool IsKnown() const;
  const std::string& Message() const;
  /// In an order in which they can be done one by one.
  std::vector<RepairStep> Steps() const;
  /// What no cable cures, a line each.
  std::vector<std::string> Notes() const;
  /// The fabric as it will be; without steps the fabric as it is.
  Fabric Repaired() const;

  /// As `fabscope repair` writes it.
  void WriteText(std::ostream& stream) const;
  void WriteCsv(std::ostream& stream) const;
  void WriteJson(std::ostream& stream) const;

 private:
  friend struct internal::Access;
  explicit RepairPlan(std::shared_ptr<const internal::PlannedFabricData> data)
      : data_(std::move(data)) {}
  std::shared_ptr<const internal::PlannedFabricData> data_;
};

/// Finds the cables to move, and checks the repaired fabric on a copy. Of the options `roots` (Auto
/// and Search mean Inferred), `rootRegex`, `mergePercent` and `showGuid` count. Throws as Check
/// does.
FABSCOPE_API RepairPlan FindRepairs(const Fabric& fabric, const CheckOptions& options = {});

}  // namespace fabscope
