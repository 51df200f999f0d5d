#pragma once

#include "reference/fabric_sketch.h"
#include "reference/random_trees.h"

namespace fabscope::internal::reference {

// Something wrong, or merely odd, with the cabling: a cable missing, moved, swapped, doubled,
// inside a rank, between roots, over two ranks, into another group or back to its own switch; a
// dead switch; hosts missing, on a spine, or special; a port of either FNM kind, asymmetric or
// outside the sub-fabric, at one end or both; a router; an unlinked switch.
void AddFault(FabricSketch& sketch, const Tree& tree);

// Names that reports must carry through unchanged, or cut: suffix parts, shared names, commas,
// quotes, bytes beyond ASCII.
void AddOddNames(FabricSketch& sketch);

// FLIDs on the leaves, unique or shared, and on some switches where they do not count.
void AddFlids(FabricSketch& sketch, const Tree& tree);

// Ports with odd attributes that should not matter, or that decide single checks.
void AddPortOddities(FabricSketch& sketch);

}  // namespace fabscope::internal::reference
