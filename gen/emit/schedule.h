// The order in which a body's nodes are written out.
#pragma once

#include <vector>

#include "ir/graph.h"

namespace gen {

// The nodes that reach an output, in an order that keeps few values live at
// once.  g++ leaves straight-line vector code close to the order it is
// written in, so this order decides how much of a body spills to the stack.
std::vector<int> scheduleNodes(const Graph& g);

}  // namespace gen

namespace gen {

// For each store, the position in `order` after which it is written: right
// after the node it stores, but never before the last load, so that a
// destination that is also the source is not written while still being read.
std::vector<int> storePositions(const Graph& g, const std::vector<int>& order, const std::vector<int>& storedNodes);

}  // namespace gen
