// Network transposition.
#pragma once

#include <functional>
#include <vector>

#include "ir/graph.h"

namespace gen {

// A target value for one network node (an output of the network).  A factor
// of 2 is folded into the first product the value meets, where it meets one
// before any sum; elsewhere `twice` applies it.
struct Seed {
    int node;
    int value;
    int factor = 1;
};

// The transpose of a real-coefficient network (inputs, additions,
// subtractions, products by real constants, widenings and narrowings), built
// on `target`: the result holds, for every input element 0 to inputs - 1, the
// sum over all paths from that input to a seeded node.  A real-input DFT
// network transposed this way is a real-output inverse of the same cost.
//
// Precision transposes too.  The value that reaches a node is its adjoint, of
// the node's own precision.  Where a single-precision node of the network
// fans out to double products (a block that widens it), its adjoint is the
// sum of what comes back, formed in double if any of it is a product and
// narrowed once: so a block of the network becomes a block of the transpose,
// summed in double and narrowed at its end.
std::vector<int> transpose(const Graph& network, const std::vector<Seed>& seeds, int inputs, Arithmetic& target,
                           const std::function<int(int)>& twice = {});

}  // namespace gen
