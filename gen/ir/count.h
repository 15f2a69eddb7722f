// Operation counts of a body, as the back-ends perform them.
#pragma once

#include "ir/graph.h"

namespace gen {

// Real operation counts of a body, lane by lane, without the scale.
struct OpCount {
    int additions = 0;
    int multiplications = 0;
    int complexProducts = 0;  // products by a constant with both parts nonzero
};
OpCount countOperations(const Graph& g);

}  // namespace gen
