// The last two ranks decide about the width: the neighborhoods stand side by side, each as wide as
// the larger of its spines and lines. The ranks above have a row each, where the spines of the
// groups stand, spread over that width.

#include "reports/tree_layout.h"

#include <algorithm>
#include <numeric>

#include "fat_tree/node_record.h"

namespace fabscope::internal {
namespace {

// With more switches nobody can tell one from another.
constexpr std::size_t mostSingleSwitches = 256;

constexpr double slotOfSwitch = 30;
constexpr double slotOfFolded = 40;
constexpr double boxPadding = 8;
constexpr double boxGap = 12;
constexpr double shortestCables = 90;
// Names stand at 50 degrees; this is what a character takes of the width and of the height.
constexpr double nameWidth = 3.7;
constexpr double nameHeight = 4.6;

using Nodes = std::vector<const IBNode*>;

// The switches of one rank that belong to one group; without a group those that belong to none.
struct Cluster {
  const FTNeighborhood* group = nullptr;
  Nodes nodes;
};
using Row = std::vector<Cluster>;

// Clusters of both ranks of a neighborhood, or of one rank higher up, that share their place.
struct Column {
  const FTNeighborhood* group = nullptr;
  std::vector<const Cluster*> clusters;  // by rank
  double width = 0;
};

class Layouter {
 public:
  Layouter(const FTTopology& topology, double left, double top)
      : topology_(topology), left_(left), top_(top), rankCount_(topology.GetRanks().size()) {
    std::size_t switches = 0;
    for (const NodeSet& rank : topology.GetRanks()) switches += rank.size();
    layout_.isFolded = switches > mostSingleSwitches;
    if (layout_.isFolded) return;
    const auto longest = static_cast<double>(LongestName());
    layout_.labelHeight = 18 + nameHeight * longest;
    overhang_ = std::max(0.0, nameWidth * longest - boxPadding);
  }

  TreeLayout LayOut() {
    for (std::size_t rank = 0; rank < rankCount_; ++rank) rows_.push_back(RowOf(rank));
    std::vector<std::vector<Column>> bands;
    std::size_t rank = 0;
    for (; rank + 2 < rankCount_; ++rank) bands.push_back(ColumnsOf(rank, rank));
    if (rank < rankCount_) bands.push_back(ColumnsOf(rank, rankCount_ - 1));
    double width = 0;
    for (const std::vector<Column>& columns : bands) width = std::max(width, WidthOf(columns));
    PlaceRows(width);
    for (std::size_t band = 0; band < bands.size(); ++band) Place(bands[band], band, width);
    layout_.right = left_ + width;
    return std::move(layout_);
  }

 private:
  double Slot() const { return layout_.isFolded ? slotOfFolded : slotOfSwitch; }

  std::size_t LongestName() const {
    std::size_t longest = 0;
    for (const NodeSet& rank : topology_.GetRanks()) {
      for (const IBNode* node : rank)
        longest = std::max(longest, GetNodeRecord(node, topology_.Show_GUID).size());
    }
    return std::min(longest, mostShownOfAName);
  }

  // The wider a tree, the flatter its cables, and the harder to tell apart.
  void PlaceRows(double width) {
    const double distance = layout_.labelHeight + std::max(shortestCables, width / 8);
    for (std::size_t rank = 0; rank < rankCount_; ++rank) {
      layout_.rowY.push_back(top_ + layout_.labelHeight + static_cast<double>(rank) * distance);
    }
  }

  Row RowOf(std::size_t rank) const;
  std::vector<Column> ColumnsOf(std::size_t firstRank, std::size_t lastRank) const;
  void Place(const std::vector<Column>& columns, std::size_t firstRank, double width);
  void PlaceCluster(const Cluster& cluster, std::size_t rank, double middle);
  void AddMark(Nodes nodes, std::size_t rank, double x);

  std::size_t MarkCount(const Cluster& cluster) const {
    return layout_.isFolded ? std::min<std::size_t>(cluster.nodes.size(), 1) : cluster.nodes.size();
  }
  static double WidthOf(const std::vector<Column>& columns) {
    return std::accumulate(columns.begin(), columns.end(),
                           boxGap * static_cast<double>(columns.size()),
                           [](double sum, const Column& column) { return sum + column.width; });
  }

  const FTTopology& topology_;
  double left_;
  double top_;
  double overhang_ = 0;  // by which the last name of a box reaches over its switch
  std::size_t rankCount_;
  std::vector<Row> rows_;
  TreeLayout layout_;
};

// A switch stands with the group whose spine it is; a leaf with the one whose line it is.
Row Layouter::RowOf(std::size_t rank) const {
  const auto& neighborhoods = topology_.GetNeighborhoods();
  const bool isLast = rank + 1 == rankCount_;
  const std::size_t groupRank = isLast && rank > 0 ? rank - 1 : rank;
  Row row;
  NodeSet placed;
  if (groupRank < neighborhoods.size()) {
    for (const FTNeighborhood* group : neighborhoods[groupRank]) {
      Cluster& cluster = row.emplace_back();
      cluster.group = group;
      for (const IBNode* node : isLast ? group->GetLines() : group->GetSpines()) {
        if (placed.insert(node).second) cluster.nodes.push_back(node);
      }
    }
  }
  Cluster& others = row.emplace_back();
  for (const IBNode* node : topology_.GetRanks()[rank]) {
    if (!placed.contains(node)) others.nodes.push_back(node);
  }
  return row;
}

// The rows of these ranks have the same groups in the same order.
std::vector<Column> Layouter::ColumnsOf(std::size_t firstRank, std::size_t lastRank) const {
  std::vector<Column> columns;
  for (std::size_t place = 0; place < rows_[lastRank].size(); ++place) {
    Column& column = columns.emplace_back();
    std::size_t marks = 0;
    for (std::size_t rank = firstRank; rank <= lastRank; ++rank) {
      const Cluster& cluster = rows_[rank][place];
      column.group = cluster.group;
      column.clusters.push_back(&cluster);
      marks = std::max(marks, MarkCount(cluster));
    }
    column.width = Slot() * static_cast<double>(marks) + 2 * boxPadding + overhang_;
    if (marks == 0) columns.pop_back();
  }
  return columns;
}

void Layouter::Place(const std::vector<Column>& columns, std::size_t firstRank, double width) {
  const double spare = (width - WidthOf(columns)) / static_cast<double>(columns.size() + 1);
  double x = left_ + spare;
  for (const Column& column : columns) {
    for (std::size_t i = 0; i < column.clusters.size(); ++i) {
      PlaceCluster(*column.clusters[i], firstRank + i, x + (column.width - overhang_) / 2);
    }
    if (column.group != nullptr) {
      layout_.boxes.push_back(
          {column.group, x, x + column.width, firstRank, firstRank + column.clusters.size() - 1});
    }
    x += column.width + boxGap + spare;
  }
}

void Layouter::PlaceCluster(const Cluster& cluster, std::size_t rank, double middle) {
  if (cluster.nodes.empty()) return;
  if (layout_.isFolded) {
    AddMark(cluster.nodes, rank, middle);
    return;
  }
  double x = middle - Slot() * static_cast<double>(cluster.nodes.size() - 1) / 2;
  for (const IBNode* node : cluster.nodes) {
    AddMark({node}, rank, x);
    x += Slot();
  }
}

void Layouter::AddMark(Nodes nodes, std::size_t rank, double x) {
  for (const IBNode* node : nodes) {
    layout_.markOf.Set(*node, static_cast<std::int32_t>(layout_.marks.size()));
  }
  layout_.marks.push_back({std::move(nodes), rank, x, layout_.rowY[rank]});
}

}  // namespace

TreeLayout LayOutTree(const FTTopology& topology, double left, double top) {
  return Layouter(topology, left, top).LayOut();
}

}  // namespace fabscope::internal
