#include "repairs/rank_trial.h"

#include <algorithm>
#include <cstddef>
#include <iomanip>
#include <memory>
#include <numeric>
#include <sstream>

#include "reference/fabric_sketch.h"
#include "reference/plain_model.h"
#include "repair/inferred_ranks.h"
#include "repairs/unlike_fabrics.h"

namespace fabscope::internal {
namespace {

using plain::AllTrees;
using plain::CableCounts;
using plain::SwitchSet;
using reference::RandomSource;

// Switches as the model has them, in another order.
class Model {
 public:
  Model(const CableCounts& cables, const std::vector<int>& hosts, std::uint64_t seed)
      : nodeOf_(hosts.size()) {
    RandomSource random(seed);
    std::iota(nodeOf_.begin(), nodeOf_.end(), 0);
    random.Shuffle(nodeOf_);
    reference::FabricSketch sketch(random);
    for (std::size_t i = 0; i < hosts.size(); ++i) sketch.AddSwitch("s" + std::to_string(i));
    for (std::size_t a = 0; a < hosts.size(); ++a) {
      for (std::size_t b = 0; b < a; ++b) {
        for (int i = 0; i < cables[a][b]; ++i) sketch.Cable(nodeOf_[a], nodeOf_[b]);
      }
      for (int i = 0; i < hosts[a]; ++i) {
        const std::string name = "h" + std::to_string(a) + "." + std::to_string(i);
        sketch.Cable(nodeOf_[a], sketch.AddHost(name));
      }
    }
    fabric_ = reference::ModelOf(sketch.Finish(false));
  }

  const IBFabric& Fabric() const { return *fabric_; }
  std::vector<int> Read(const TreeRanks& ranks) const {
    std::vector<int> read;
    for (const int node : nodeOf_) read.push_back(ranks.ofNode[static_cast<std::size_t>(node)]);
    return read;
  }

 private:
  std::vector<int> nodeOf_;
  std::unique_ptr<IBFabric> fabric_;
};

std::string TextOf(const CableCounts& cables, const std::vector<int>& hosts,
                   const std::vector<int>& ranks) {
  std::ostringstream text;
  text << "cables";
  for (std::size_t a = 0; a < hosts.size(); ++a) {
    for (std::size_t b = 0; b < a; ++b) {
      for (int i = 0; i < cables[a][b]; ++i) text << ' ' << b << '-' << a;
    }
  }
  text << ", hosts";
  for (const int count : hosts) text << ' ' << count;
  text << ", ranks";
  for (const int rank : ranks) text << ' ' << rank;
  return text.str();
}

}  // namespace

std::string RanksScore::Text() const {
  const auto share = [&](std::uint64_t count) {
    return 100 * static_cast<double>(count) /
           static_cast<double>(std::max<std::uint64_t>(fabrics, 1));
  };
  std::ostringstream text;
  text << std::fixed << std::setprecision(2) << fabrics << " fabrics: " << beaten << " ("
       << share(beaten) << " %) where another tree has fewer misfits, by " << mostBeaten
       << " at most; " << countedMore << " (" << share(countedMore)
       << " %) where more misfits are counted than needed, by " << mostMore << " at most";
  return text.str();
}

std::string TryInferredRanks(const CableCounts& cables, const std::vector<int>& hosts,
                             AllTrees& trees, std::uint64_t seed, RanksScore& score) {
  const Model model(cables, hosts, seed);
  const TreeRanks inferred = InferRanks(model.Fabric());
  const auto counted = static_cast<int>(CountMisfits(model.Fabric(), inferred));
  const std::vector<int> ranks = model.Read(inferred);
  if (std::find(ranks.begin(), ranks.end(), TreeRanks::none) != ranks.end()) {
    return "a switch has no rank: " + TextOf(cables, hosts, ranks);
  }
  const plain::Blemishes blemishes = trees.BlemishesOf(ranks, hosts);
  const int least = trees.LeastMisfits(blemishes, hosts);
  ++score.fabrics;
  const int more = counted - blemishes.misfits;
  if (more > 0) ++score.countedMore;
  score.mostMore = std::max(score.mostMore, more);
  const int beatenBy = blemishes.misfits - least;
  if (beatenBy > 0) ++score.beaten;
  score.mostBeaten = std::max(score.mostBeaten, beatenBy);
  if (more < 0) return "too few misfits are counted: " + TextOf(cables, hosts, ranks);
  if ((counted == 0) != (blemishes.misfits == 0)) {
    return "misfits are counted in a proper tree: " + TextOf(cables, hosts, ranks);
  }
  if (least == 0 && beatenBy > 0) {
    return "another tree is proper: " + TextOf(cables, hosts, ranks);
  }
  return {};
}

std::string TryAllSmallFabrics(int switches, RanksScore& score) {
  for (const CableCounts& cables : UnlikeCablings(switches)) {
    AllTrees trees(cables);
    for (const SwitchSet withHosts : UnlikeHosts(cables)) {
      std::vector<int> hosts;
      for (int a = 0; a < switches; ++a) {
        hosts.push_back(static_cast<int>(withHosts >> static_cast<unsigned>(a) & 1U));
      }
      std::string wrong = TryInferredRanks(cables, hosts, trees, score.fabrics, score);
      if (!wrong.empty()) return wrong;
    }
  }
  return {};
}

// Each switch but the first is cabled to an earlier one, so that all hang together.
std::string TryRandomFabric(std::uint64_t seed, RanksScore& score) {
  RandomSource random(seed);
  const auto switches = static_cast<std::size_t>(random.Between(3, 6));
  const int percent = random.Between(10, 70);
  const int mostParallel = random.Between(1, 3);
  CableCounts cables(switches, std::vector<int>(switches));
  const auto join = [&](std::size_t a, std::size_t b) {
    cables[a][b] = cables[b][a] = random.Between(1, mostParallel);
  };
  for (std::size_t a = 1; a < switches; ++a) {
    join(a, static_cast<std::size_t>(random.Below(static_cast<int>(a))));
    for (std::size_t b = 0; b < a; ++b) {
      if (cables[a][b] == 0 && random.Chance(percent)) join(a, b);
    }
  }
  std::vector<int> hosts(switches);
  for (int& count : hosts) count = std::max(0, random.Between(-2, 3));
  if (std::all_of(hosts.begin(), hosts.end(), [](int count) { return count == 0; })) hosts[0] = 1;
  AllTrees trees(cables);
  return TryInferredRanks(cables, hosts, trees, seed, score);
}

}  // namespace fabscope::internal
