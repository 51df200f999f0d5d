// Which roots a tree is built from.
//
// The search asks leaves for their view of the fabric and is cheap, but leaves near a wrong cable
// can agree on wrong roots. Ranks inferred from all cables at once are not misled so easily, and
// cost more. So the search goes first. Where its tree fits every cable, it is right, and nothing
// else is looked at. Otherwise both trees are measured by what would have to change in the fabric
// until it is a proper tree of their ranks, and the inferred one must be strictly better: what the
// search finds is what users know.

#include "check/build_tree.h"

#include <cstdint>
#include <optional>

#include "check/checked_tree.h"
#include "fat_tree/status.h"
#include "repair/inferred_ranks.h"
#include "repair/proper_tree.h"
#include "text/text_fields.h"

namespace fabscope::internal {
namespace {

NodeSet RootsOf(const TreeRanks& ranks, const IBFabric& fabric) {
  NodeSet roots;
  if (ranks.levels == 0) return roots;
  for (const IBNode* node : fabric.switches) {
    if (ranks.ofNode.at(node->index) == 0) roots.insert(node);
  }
  return roots;
}

bool HaveSameRanks(const FTTopology& a, const FTTopology& b) {
  return RanksOf(a).ofNode == RanksOf(b).ofNode;
}

// Of one rank there is nothing to check.
bool HasRanks(const BuiltTree& tree) {
  return tree.isBuilt && tree.topology->GetRanks().size() > 1;
}

std::string NoticeOf(const BuiltTree& searched, const BuiltTree& inferred) {
  if (!searched.isBuilt) {
    return "-W- Roots: distance classifications give none (" + CleanText(searched.message) +
           "); inferred roots are used";
  }
  return "-W- Roots: distance classifications leave " + std::to_string(searched.roots.misfits) +
         " misfits, the inferred roots " + std::to_string(inferred.roots.misfits) +
         "; these are used (--roots search for the former)";
}

class TreeBuilder {
 public:
  TreeBuilder(const IBFabric& fabric, const CheckOptions& options, std::ostringstream& stream)
      : fabric_(fabric), options_(options), stream_(stream) {}

  BuiltTree Build() {
    if (options_.roots == RootsFrom::Auto) return BuildBest();
    BuiltTree tree = BuildFrom(options_.roots);
    if (tree.isBuilt && options_.wantMisfits) tree.roots.misfits = MisfitsOf(tree);
    return tree;
  }

 private:
  BuiltTree BuildBest();
  // `before`: a topology of the same fabric, or null.
  BuiltTree BuildFrom(RootsFrom method, const FTTopology* before = nullptr);
  int BuildFrom(RootsFrom method, FTTopology& topology, std::string& message);
  std::uint64_t MisfitsOf(const BuiltTree& tree) {
    return CountMisfits(RanksOf(*tree.topology), GetReading(*tree.topology));
  }
  TreeReading& GetReading(const FTTopology& topology) {
    return reading_ ? *reading_ : reading_.emplace(fabric_, topology.GetTreeLinks());
  }

  const IBFabric& fabric_;
  const CheckOptions& options_;
  std::ostringstream& stream_;
  std::optional<TreeReading> reading_;
};

BuiltTree TreeBuilder::BuildBest() {
  BuiltTree searched = BuildFrom(RootsFrom::Search);
  if (searched.isBuilt) {
    if (IsProperTree(*searched.topology)) return searched;
    searched.roots.misfits = MisfitsOf(searched);
    if (searched.roots.misfits == 0) return searched;
  }
  BuiltTree inferred = BuildFrom(RootsFrom::Inferred, searched.topology.get());
  if (!HasRanks(inferred)) return searched;
  if (searched.isBuilt && HaveSameRanks(*searched.topology, *inferred.topology)) return searched;
  inferred.roots.misfits = MisfitsOf(inferred);
  if (searched.isBuilt && inferred.roots.misfits >= searched.roots.misfits) return searched;
  inferred.roots.notice = NoticeOf(searched, inferred);
  return inferred;
}

// A topology is built once, and its messages tell all that went before: so each has its own.
BuiltTree TreeBuilder::BuildFrom(RootsFrom method, const FTTopology* before) {
  BuiltTree tree;
  tree.roots.method = method;
  tree.topology = std::make_unique<FTTopology>(&fabric_, &stream_, options_.mergePercent);
  tree.topology->Show_GUID = options_.showGuid;
  if (before != nullptr) tree.topology->ShareTreeLinks(*before);
  tree.isBuilt = BuildFrom(method, *tree.topology, tree.message) == StatusSuccess;
  tree.output = stream_.str();
  stream_.str({});
  return tree;
}

int TreeBuilder::BuildFrom(RootsFrom method, FTTopology& topology, std::string& message) {
  std::vector<FabricErrGeneral*> none;  // of building
  switch (method) {
    case RootsFrom::Smdb:
      return topology.Build(none, message);
    case RootsFrom::Regex:
      return topology.Build(none, message, *options_.rootRegex);
    case RootsFrom::Inferred:
      return topology.Build(none, message,
                            RootsOf(InferRanks(fabric_, GetReading(topology)), fabric_));
    case RootsFrom::Auto:
    case RootsFrom::Search:
      break;
  }
  return topology.Build(none, message, options_.retries, options_.equalClassifications);
}

}  // namespace

BuiltTree BuildTree(const IBFabric& fabric, const CheckOptions& options,
                    std::ostringstream& stream) {
  return TreeBuilder(fabric, options, stream).Build();
}

}  // namespace fabscope::internal
