// Operation counts of a body, as the back-ends perform them.
#pragma once

#include "ir/graph.h"

namespace gen {

// Real operations of a body, lane by lane, the scale of the outputs included.
// Signs cost nothing: the back-ends fold them into additions and stores.
struct OpCount {
    int additions = 0;
    int multiplications = 0;
    int complexProducts = 0;  // products by a constant with both parts nonzero
    // Of the above, those in double precision in a single-precision body, and
    // the conversions between the two.
    int doubleAdditions = 0;
    int doubleMultiplications = 0;
    int widenings = 0;
    int narrowings = 0;
    bool operator==(const OpCount&) const = default;
};
OpCount countOperations(const Graph& g);

}  // namespace gen
