#pragma once

#include <cstddef>
#include <vector>

#include "compare/counterparts.h"
#include "fabric/ib_fabric.h"

namespace fabscope::internal {

// What is different between a fabric as it was and as it is. All lists are in model order: of the
// old fabric where something went or moved, of the new one where something came. Nodes and ports
// belong to the two fabrics.

// A node that went or came, with all cables that it had or has.
struct NodeAndCables {
  const IBNode* node;
  std::size_t cables;
};

struct NodeChange {
  const IBNode* was;
  const IBNode* is;
};

struct Cable {
  const IBPort* end1;
  const IBPort* end2;
};

// A cable of which one end stayed where it was. Of hosts it is the host's end that stayed.
struct MovedCable {
  const IBPort* kept;  // as it is
  const IBPort* was;   // the other end, in the old fabric
  const IBPort* is;    // the other end, in the new one
};

// A cable that links two switches or hosts as before, at another speed.
struct SpeedChange {
  Cable was;
  Cable is;
};

struct FabricChanges {
  std::vector<NodeAndCables> nodesWent;
  std::vector<NodeAndCables> nodesCame;
  std::vector<NodeChange> replaced;  // another GUID under the same name
  std::vector<NodeChange> renamed;   // another name of the same GUID
  std::vector<MovedCable> moved;
  // Without those of nodes that went or came.
  std::vector<Cable> cablesWent;
  std::vector<Cable> cablesCame;
  std::vector<SpeedChange> speeds;

  bool IsEmpty() const {
    return nodesWent.empty() && nodesCame.empty() && replaced.empty() && renamed.empty() &&
           moved.empty() && cablesWent.empty() && cablesCame.empty() && speeds.empty();
  }
};

FabricChanges CompareFabrics(const IBFabric& was, const IBFabric& is, const Counterparts& nodes);

}  // namespace fabscope::internal
