// Network transposition.
#pragma once

#include <utility>
#include <vector>

#include "ir/graph.h"

namespace gen {

// The transpose of a real-coefficient network (inputs, additions,
// subtractions, products by real constants), built on `target`: `seeds`
// gives a target value for some network nodes (their outputs), and the
// result holds, for every input element 0 to inputs - 1, the sum over all
// paths from that input to a seeded node.  A real-input DFT network
// transposed this way is a real-output inverse of the same cost.
std::vector<int> transpose(const Graph& network, const std::vector<std::pair<int, int>>& seeds, int inputs,
                           Arithmetic& target);

}  // namespace gen
